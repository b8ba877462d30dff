// Description texts for tests: made up, or read from a file.
#pragma once

#include <fstream>
#include <sstream>
#include <string>

namespace vq::test {

// Wraps node elements into a schema 1.1 description.
inline std::string Description(const std::string& nodes) {
  return R"(<?xml version="1.0" encoding="utf-8"?>
<RegisterDescription ModelName="ModuleTest" VendorName="VQ" ToolTip="module test"
  StandardNameSpace="None" SchemaMajorVersion="1" SchemaMinorVersion="1"
  SchemaSubMinorVersion="0" MajorVersion="1" MinorVersion="0" SubMinorVersion="0"
  ProductGuid="11111111-2222-3333-4444-555555555555"
  VersionGuid="11111111-2222-3333-4444-666666666666"
  xmlns="http://www.genicam.org/GenApi/Version_1_1">
)" + nodes +
         R"(
  <Port Name="Device"/>
</RegisterDescription>
)";
}

// An unsigned big-endian integer register of the port "Device".
inline std::string IntRegNode(const char* name, int address, int length,
                              const char* access = "RW") {
  return std::string("<IntReg Name=\"") + name + "\"><Address>" + std::to_string(address) +
         "</Address><Length>" + std::to_string(length) + "</Length><AccessMode>" + access +
         "</AccessMode><pPort>Device</pPort><Sign>Unsigned</Sign>"
         "<Endianess>BigEndian</Endianess></IntReg>\n";
}

// The whole content of a file; empty when it cannot be read.
inline std::string ReadTextFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

}  // namespace vq::test
