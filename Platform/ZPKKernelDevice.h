// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>

/// A device as the kernel shows it: a folder in sysfs. What the kernel says in the device's event file
/// is read once, attributes when they are asked for; a device that has gone answers with nothing. May
/// be read from any thread.
class ZPKKernelDevice {
public:
    using Properties = std::map<std::string, std::string, std::less<>>;

    /// The device of a path in sysfs, links resolved; nothing when no device is there.
    static std::optional<ZPKKernelDevice> atPath(const std::string& path);

    /// The folder of the device, without links.
    const std::string& path() const { return m_path; }

    /// The kernel's name, as in /dev: `sr0`, `cciss/c0d0`.
    std::string name() const;

    /// The subsystem that the device belongs to (`block`, `usb`); empty when there is none.
    std::string subsystem() const;

    /// What the kernel says in the event file.
    const Properties& properties() const { return m_properties; }

    /// The kind of the device inside its subsystem (`disk`, `partition`); empty when it tells none.
    std::string type() const;

    /// The value of an attribute, without the line's end; nothing when it cannot be read.
    std::optional<std::string> attribute(const std::string& name) const;

    /// The number of the device; nothing when it has none.
    std::optional<dev_t> number() const;

    /// The nearest device that holds this one and is of the subsystem and type; nothing when there is
    /// none.
    std::optional<ZPKKernelDevice> parent(std::string_view subsystem, std::string_view type) const;

    /// "MAJOR:MINOR" in decimals; nothing when the text is anything else.
    static std::optional<dev_t> numberOfText(std::string_view text);

    /// Adds the `KEY=VALUE` of each line; what is no such line is passed over, and of several lines of
    /// one key the last counts.
    static void addLines(std::string_view text, Properties& outProperties);

private:
    ZPKKernelDevice(std::string path, Properties properties);

    std::string m_path;
    Properties m_properties;
};
