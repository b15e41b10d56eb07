#pragma once

#include <QString>

#include "platform/device.h"
#include "platform/log.h"

namespace zellick::qt {

// What this machine is, as the maker's services are told: the pretty host name of
// /etc/machine-info (else the host name), the device-tree model of a phone or the DMI product
// name of a PC, NAME and VERSION_ID of /etc/os-release, and the vendor identifier kept in
// `vendorIdFile` (made, as an upper-case UUID, when it is missing or not a UUID), the codes of
// QLocale::system() and whether the effective user is root. What cannot be read is "unknown",
// with a log line. Reads a few small files; any thread.
DeviceFacts readDeviceFacts(const QString& vendorIdFile, Log& log);

}  // namespace zellick::qt
