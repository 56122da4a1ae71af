// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Platform/MadeUpDevices.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "Tests/Support/TemporaryFolder.h"

namespace zpk_test {

namespace {

/// A name space in which this person, as its root, may mount; the person must be known in it.
bool enterNameSpaceOfOnesOwn() {
    const std::string user = std::to_string(::geteuid());
    const std::string group = std::to_string(::getegid());
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        return false;
    }
    writeFile("/proc/self/uid_map", "0 " + user + " 1");
    writeFile("/proc/self/setgroups", "deny");
    writeFile("/proc/self/gid_map", "0 " + group + " 1");
    return true;
}

/// Once is enough for a process.
bool haveOwnMountTable() {
    static const bool kIsOwn = ::unshare(CLONE_NEWNS) == 0 || enterNameSpaceOfOnesOwn();
    return kIsOwn;
}

void link(const std::filesystem::path& target, const std::filesystem::path& place) {
    std::filesystem::create_directories(place.parent_path());
    std::filesystem::create_symlink(target.lexically_relative(place.parent_path()), place);
}

}  // namespace

MadeUpDevices::MadeUpDevices() {
    if (!haveOwnMountTable() || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        !mountEmpty("/sys") || !mountEmpty("/run")) {
        m_missing = std::string("no mount table of one's own: ") + std::strerror(errno);
    }
}

MadeUpDevices::~MadeUpDevices() {
    if (m_missing.empty()) {
        ::umount2("/run", MNT_DETACH);
        ::umount2("/sys", MNT_DETACH);
    }
}

bool MadeUpDevices::mountEmpty(const char* folder) {
    return ::mount("made-up", folder, "tmpfs", 0, "mode=0755") == 0;
}

void MadeUpDevices::add(const std::string& path, const std::string& subsystem, const std::string& number,
                        const std::string& events) {
    const std::string device = "/sys/devices/" + path;
    writeFile(device + "/uevent", events);
    std::filesystem::create_directories("/sys/" + subsystem);
    link("/sys/" + subsystem, device + "/subsystem");
    if (subsystem == "class/block") {
        link(device, "/sys/class/block/" + std::filesystem::path(path).filename().string());
    }
    if (!number.empty()) {
        setAttribute(path, "dev", number + "\n");
        link(device, "/sys/dev/block/" + number);
    }
}

void MadeUpDevices::setAttribute(const std::string& path, const std::string& name, const std::string& value) {
    writeFile("/sys/devices/" + path + "/" + name, value);
}

void MadeUpDevices::setRecord(const std::string& number, const std::string& record) {
    writeFile("/run/udev/data/b" + number, record);
}

}  // namespace zpk_test
