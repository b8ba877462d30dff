// What the driver's entry points do, free of the C calling details: each throws DriverFailure.
#pragma once

#include <CLProtocol/CLProtocol.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "Connection.h"

namespace vq::gencpdrv {

// Set by CLP_STOP_PROBE_DEVICE; a running probe gives up at its next step.
std::atomic<bool>& stopProbeFlag();

// Finds the device on `serial` (trying the rates the port offers, the one that last worked
// first), identifies it, accepts it when `shortTemplate` (a template or a short device ID) is a
// token-wise prefix of its short device ID, and opens it.
std::shared_ptr<Connection> probeDevice(ISerial* serial, const std::string& shortTemplate,
                                        uint32_t timeoutMs);

// XML IDs of the descriptions the device holds, best first.
std::vector<std::string> listXmlIds(ISerial* serial, Connection& connection, uint32_t timeoutMs);

// The description text for an XML ID (empty ID: the best the device holds).
std::string fetchDescription(ISerial* serial, Connection& connection, const std::string& xmlId,
                             uint32_t timeoutMs);

// SHA-1 (hexadecimal) of the manifest entry behind an XML ID; empty when the device gives none.
std::string descriptionSha1(ISerial* serial, Connection& connection, const std::string& xmlId,
                            uint32_t timeoutMs);

// Current baud-rate bit.
uint32_t currentBaudRate(Connection& connection);
// Rates both the device and the port support.
uint32_t supportedBaudRates(ISerial* serial, const Connection& connection);
// True when a write of `size` bytes at `address` is a write of the current baud-rate register.
bool isBaudRateRegister(const Connection& connection, uint64_t address, uint64_t size);
// Switches device and port to `baudBit` (or CL_BAUDRATE_AUTOMAX) with the confirmation write.
void changeBaudRate(ISerial* serial, Connection& connection, uint32_t baudBit, uint32_t timeoutMs);

}  // namespace vq::gencpdrv
