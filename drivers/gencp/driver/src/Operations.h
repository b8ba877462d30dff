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

// Identifies the device on `serial` at 9600 baud; accepts it when `shortTemplate` (a template or
// a short device ID) is a token-wise prefix of its short device ID.
std::shared_ptr<Connection> probeDevice(ISerial* serial, const std::string& shortTemplate,
                                        uint32_t timeoutMs);

// XML IDs of the descriptions the device holds, best first.
std::vector<std::string> listXmlIds(ISerial* serial, Connection& connection, uint32_t timeoutMs);

// The description text for an XML ID (empty ID: the best the device holds).
std::string fetchDescription(ISerial* serial, Connection& connection, const std::string& xmlId,
                             uint32_t timeoutMs);

// Current baud-rate bit as the device reports it.
uint32_t currentBaudRate(ISerial* serial, Connection& connection, uint32_t timeoutMs);
// Rates both the device and the port support.
uint32_t supportedBaudRates(ISerial* serial, Connection& connection, uint32_t timeoutMs);
// Switches device and port to `baudBit` (or CL_BAUDRATE_AUTOMAX) with the confirmation write.
void changeBaudRate(ISerial* serial, Connection& connection, uint32_t baudBit, uint32_t timeoutMs);

}  // namespace vq::gencpdrv
