#include "TestPort.h"

#include <sstream>
#include <stdexcept>

namespace genapi_test {

void MemoryPort::Read(void* buffer, int64_t address, int64_t length) {
  if (failReads) throw TIMEOUT_EXCEPTION("Read failed: no answer from the device");
  ++reads;
  auto* out = static_cast<uint8_t*>(buffer);
  for (int64_t i = 0; i < length; ++i) {
    auto it = memory_.find(address + i);
    out[i] = it == memory_.end() ? 0 : it->second;
  }
}

void MemoryPort::Write(const void* buffer, int64_t address, int64_t length) {
  if (failWrites) throw RUNTIME_EXCEPTION("Write failed (Code: -10004) time-out on serial link");
  ++writes;
  const auto* in = static_cast<const uint8_t*>(buffer);
  for (int64_t i = 0; i < length; ++i) memory_[address + i] = in[i];
}

void MemoryPort::Poke(int64_t address, const std::vector<uint8_t>& bytes) {
  for (size_t i = 0; i < bytes.size(); ++i) memory_[address + int64_t(i)] = bytes[i];
}

void MemoryPort::PokeLE32(int64_t address, uint32_t value) {
  Poke(address, {uint8_t(value), uint8_t(value >> 8), uint8_t(value >> 16), uint8_t(value >> 24)});
}

void MemoryPort::PokeBE32(int64_t address, uint32_t value) {
  Poke(address, {uint8_t(value >> 24), uint8_t(value >> 16), uint8_t(value >> 8), uint8_t(value)});
}

std::vector<uint8_t> MemoryPort::Peek(int64_t address, size_t length) const {
  std::vector<uint8_t> out(length, 0);
  for (size_t i = 0; i < length; ++i) {
    auto it = memory_.find(address + int64_t(i));
    if (it != memory_.end()) out[i] = it->second;
  }
  return out;
}

uint32_t MemoryPort::PeekLE32(int64_t address) const {
  const auto b = Peek(address, 4);
  return uint32_t(b[0]) | uint32_t(b[1]) << 8 | uint32_t(b[2]) << 16 | uint32_t(b[3]) << 24;
}

std::string Describe(const std::string& nodes, bool schema10) {
  const char* ns = schema10 ? "http://www.genicam.org/GenApi/Version_1_0"
                            : "http://www.genicam.org/GenApi/Version_1_1";
  return std::string(
             "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
             "<RegisterDescription ModelName=\"TestModel\" VendorName=\"TestVendor\" "
             "ToolTip=\"Test\" StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" "
             "SchemaMinorVersion=\"") +
         (schema10 ? "0" : "1") +
         "\" SchemaSubMinorVersion=\"0\" MajorVersion=\"2\" MinorVersion=\"3\" "
         "SubMinorVersion=\"4\" ProductGuid=\"01234567-89ab-cdef-0123-456789abcdef\" "
         "VersionGuid=\"fedcba98-7654-3210-fedc-ba9876543210\" xmlns=\"" +
         ns + "\">\n" + nodes + "\n<Port Name=\"Device\"/>\n</RegisterDescription>\n";
}

std::string Reg(const char* kind, const std::string& name, int64_t address, const char* mode,
                const std::string& extra, int length) {
  return std::string("<") + kind + " Name=\"" + name + "\">" + extra + "<Address>" +
         std::to_string(address) + "</Address><Length>" + std::to_string(length) +
         "</Length><AccessMode>" + mode + "</AccessMode><pPort>Device</pPort></" + kind + ">";
}

std::string Property(GenApi::INode* node, const char* name) {
  GenICam::gcstring value, attribute;
  if (!node->GetProperty(name, value, attribute)) return "(none)";
  const std::string text = value.c_str();
  return attribute.size() ? text + " @ " + attribute.c_str() : text;
}

size_t ConnectEveryPort(GenApi::CNodeMapRef& ref, GenApi::IPort* port) {
  GenApi::NodeList_t nodes;
  ref._GetNodes(nodes);
  size_t connected = 0;
  for (GenApi::INode* n : nodes)
    if (dynamic_cast<GenApi::IPort*>(n)) connected += ref._Connect(port, n->GetName()) ? 1 : 0;
  return connected;
}

Loaded::Loaded(const std::string& nodes, bool schema10) {
  ref._LoadXMLFromString(Describe(nodes, schema10).c_str());
  if (!ref._Connect(&port)) throw std::runtime_error("connect failed");
}

GenApi::INode* Loaded::Node(const char* name) const {
  GenApi::INode* n = ref._GetNode(name);
  if (!n) throw std::runtime_error(std::string("no node ") + name);
  return n;
}

std::string Loaded::Modes(const std::string& names) const {
  static const char* const kNames[] = {"NI", "NA", "WO", "RO", "RW", "Undefined", "CycleDetect"};
  std::istringstream in(names);
  std::string out;
  for (std::string name; in >> name;) {
    const GenApi::EAccessMode mode = Node(name.c_str())->GetAccessMode();
    out += (out.empty() ? "" : " ") +
           (mode >= 0 && mode <= 6 ? std::string(kNames[mode]) : std::to_string(mode));
  }
  return out;
}

}  // namespace genapi_test
