// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

namespace zpk_test {

/// Gives this process, and no other, empty folders for /sys and /run, to be filled by a test; the real
/// ones are back at its end. Needs the right to mount, or to make a name space in which one has it.
class MadeUpDevices {
public:
    MadeUpDevices();
    ~MadeUpDevices();
    MadeUpDevices(const MadeUpDevices&) = delete;
    MadeUpDevices& operator=(const MadeUpDevices&) = delete;

    /// Why there are no such folders here; empty when there are.
    const std::string& missing() const { return m_missing; }

    /// Adds a device to /sys. `path` is below /sys/devices, `subsystem` a folder below /sys
    /// ("class/block"), and `number` empty or "MAJOR:MINOR".
    void add(const std::string& path, const std::string& subsystem, const std::string& number,
             const std::string& events);

    /// Writes an attribute of a device.
    void setAttribute(const std::string& path, const std::string& name, const std::string& value);

    /// Writes the record that the device manager keeps of the block device.
    void setRecord(const std::string& number, const std::string& record);

private:
    bool mountEmpty(const char* folder);

    std::string m_missing;
};

}  // namespace zpk_test
