// Test doubles: a port backed by sparse memory (zero where never written)
// that counts its traffic, and helpers to load inline descriptions.
#pragma once

#include <GenApi/GenApi.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace genapi_test {

class MemoryPort : public GenApi::IPort {
 public:
  GenApi::EAccessMode GetAccessMode() const override { return mode; }
  void Read(void* buffer, int64_t address, int64_t length) override;
  void Write(const void* buffer, int64_t address, int64_t length) override;

  // Device-side access that bypasses the node map (an "external change").
  void Poke(int64_t address, const std::vector<uint8_t>& bytes);
  void PokeLE32(int64_t address, uint32_t value);
  void PokeBE32(int64_t address, uint32_t value);
  std::vector<uint8_t> Peek(int64_t address, size_t length) const;
  uint32_t PeekLE32(int64_t address) const;

  GenApi::EAccessMode mode = GenApi::RW;
  int reads = 0;
  int writes = 0;
  bool failWrites = false;
  bool failReads = false;  // reads throw a TimeoutException, as a silent device would

 private:
  std::map<int64_t, uint8_t> memory_;
};

// What a call comes to: "" when it returns, else the GenICam exception's type
// and description ("OutOfRangeException: Value = ...").
template <class Call>
std::string Outcome(Call&& call) {
  try {
    call();
  } catch (const GenICam::GenericException& e) {
    return std::string(e.GetExceptionType()) + ": " + e.GetDescription();
  }
  return "";
}

// Wraps an inline node list in a RegisterDescription with a "Device" port.
std::string Describe(const std::string& nodes, bool schema10 = false);

// A register node of a kind (IntReg, FloatReg, StringReg, ...) on the "Device"
// port; `extra` goes first inside the element.
std::string Reg(const char* kind, const std::string& name, int64_t address, const char* mode = "RW",
                const std::string& extra = "", int length = 4);
inline std::string IntReg(const std::string& name, int64_t address, const char* mode = "RW",
                          const std::string& extra = "", int length = 4) {
  return Reg("IntReg", name, address, mode, extra, length);
}

// A property's value, " @ " and its attribute when it has one; "(none)" when
// the node has no such property.
std::string Property(GenApi::INode* node, const char* name);

// Connects `port` to every port node of the map; gives how many took it.
size_t ConnectEveryPort(GenApi::CNodeMapRef& ref, GenApi::IPort* port);

// A loaded node map connected to a memory port.
struct Loaded {
  explicit Loaded(const std::string& nodes, bool schema10 = false);
  GenApi::INode* Node(const char* name) const;
  // The access modes of the named nodes ("A B C") as text ("RW RO NA").
  std::string Modes(const std::string& names) const;
  template <class T>
  T* As(const char* name) const {
    return dynamic_cast<T*>(Node(name));
  }
  GenApi::CNodeMapRef ref;
  MemoryPort port;
};

}  // namespace genapi_test
