// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tests/Archive/ArchiveFixture.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

namespace zpk_test {

namespace {

namespace fs = std::filesystem;

std::uint64_t digestOfFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<char> buffer(1 << 20);
    std::uint64_t digest = 14695981039346656037U;
    while (file.read(buffer.data(), static_cast<std::streamsize>(buffer.size())) || file.gcount() > 0) {
        std::string_view piece(buffer.data(), static_cast<std::size_t>(file.gcount()));
        digest = (digest ^ std::hash<std::string_view>()(piece)) * 1099511628211U;
    }
    return digest;
}

std::string describe(const std::string& path, const struct stat& status, bool otherTimes) {
    char text[128];
    long long time = !S_ISREG(status.st_mode) && !otherTimes ? 0 : status.st_mtim.tv_sec;
    unsigned permissions = S_ISLNK(status.st_mode) ? 0 : status.st_mode & 07777;
    std::snprintf(text, sizeof(text), "type %o mode %o time %lld ", status.st_mode & S_IFMT, permissions,
                  time);
    std::string description = text;
    if (S_ISREG(status.st_mode)) {
        description +=
            "size " + std::to_string(status.st_size) + " digest " + std::to_string(digestOfFile(path));
    } else if (S_ISLNK(status.st_mode)) {
        description += "-> " + fs::read_symlink(path).string();
    }
    return description;
}

void appendDigits(std::string& archive, std::uint64_t value, std::size_t digits, std::uint64_t base) {
    std::string text(digits, '0');
    for (std::size_t i = digits; i > 0; --i, value /= base) {
        text[i - 1] = "0123456789abcdef"[value % base];
    }
    archive += text;
}

}  // namespace

void appendOdc(std::string& archive, const RawMember& member) {
    std::uint64_t size = member.announcedSize == UINT64_MAX ? member.data.size() : member.announcedSize;
    archive += "070707";
    appendDigits(archive, member.inode >> 18, 6, 8);
    appendDigits(archive, member.inode, 6, 8);
    appendDigits(archive, member.mode, 6, 8);
    appendDigits(archive, 0, 6, 8);
    appendDigits(archive, 0, 6, 8);
    appendDigits(archive, member.linkCount, 6, 8);
    appendDigits(archive, 0, 6, 8);
    appendDigits(archive, member.modified, 11, 8);
    appendDigits(archive, member.name.size() + 1, 6, 8);
    appendDigits(archive, size, 11, 8);
    archive += member.name;
    archive += '\0';
    archive += member.data;
}

void appendNewc(std::string& archive, const RawMember& member) {
    std::uint64_t size = member.announcedSize == UINT64_MAX ? member.data.size() : member.announcedSize;
    archive += "070701";
    for (std::uint64_t value :
         {std::uint64_t{member.inode}, std::uint64_t{member.mode}, std::uint64_t{0}, std::uint64_t{0},
          std::uint64_t{member.linkCount}, member.modified, size, std::uint64_t{0}, std::uint64_t{0},
          std::uint64_t{0}, std::uint64_t{0}, std::uint64_t{member.name.size() + 1}, std::uint64_t{0}}) {
        appendDigits(archive, value, 8, 16);
    }
    archive += member.name;
    archive += '\0';
    archive.append((4 - archive.size() % 4) % 4, '\0');
    archive += member.data;
    archive.append((4 - archive.size() % 4) % 4, '\0');
}

std::string randomText(std::size_t size, unsigned seed) {
    std::string text(size, '\0');
    std::uint64_t state = seed * 2654435761U + 1;
    for (char& byte : text) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        byte = static_cast<char>("abcdefgh\n"[(state >> 33) % 9]);
    }
    return text;
}

void setTime(const std::string& path, time_t seconds) {
    timespec times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << path;
}

void becomeNobody() {
    if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0)) {
        _exit(126);
    }
}

Outcome runProgram(const std::vector<std::string>& command, const std::function<void()>& prepare) {
    TemporaryFolder folder;
    std::string errorPath = folder / "stderr";
    int errorFile = open(errorPath.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    pid_t child = fork();
    if (child == 0) {
        dup2(errorFile, STDERR_FILENO);
        std::vector<char*> arguments;
        for (const std::string& argument : command) {
            arguments.push_back(const_cast<char*>(argument.c_str()));
        }
        arguments.push_back(nullptr);
        // Opened beforehand: whoever `prepare` makes of this process may not reach the build folder.
        const int program =
            command[0].find('/') == std::string::npos ? -1 : open(arguments[0], O_PATH | O_CLOEXEC);
        if (prepare) {
            prepare();
        }
        if (program >= 0) {
            fexecve(program, arguments.data(), environ);
        } else {
            execvp(arguments[0], arguments.data());
        }
        _exit(127);
    }
    close(errorFile);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    Outcome outcome;
    outcome.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    outcome.standardError = readFile(errorPath);
    outcome.peakMemory = usage.ru_maxrss;
    return outcome;
}

Outcome create(const std::string& source, const std::string& archive, const std::function<void()>& prepare) {
    return runProgram({ZPK_DITTO, "-c", "-z", "-rsrc", "--keepParent", source, archive}, prepare);
}

Outcome extract(const std::string& archive, const std::string& folder, const std::function<void()>& prepare) {
    return runProgram({ZPK_DITTO, "-x", "-z", "--rsrc", archive, folder}, prepare);
}

void shell(const std::string& line) {
    ASSERT_EQ(std::system(("set -e; " + line).c_str()), 0) << line;
}

bool hasProgram(const std::string& name) {
    return std::system(("command -v " + name + " >/dev/null 2>&1").c_str()) == 0;
}

std::map<std::string, std::string> snapshot(const std::string& folder, bool otherTimes) {
    std::map<std::string, std::string> things;
    std::map<std::pair<dev_t, ino_t>, std::string> firstNames;
    std::set<std::string> paths;
    for (const auto& item : fs::recursive_directory_iterator(folder)) {
        paths.insert(item.path().string());
    }
    for (const std::string& path : paths) {
        struct stat status {};
        EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
        std::string relative = path.substr(folder.size() + 1);
        std::string& description = things[relative];
        description = describe(path, status, otherTimes);
        if (!S_ISDIR(status.st_mode) && status.st_nlink > 1) {
            auto [first, isNew] = firstNames.try_emplace({status.st_dev, status.st_ino}, relative);
            description += " same as " + first->second;
        }
    }
    return things;
}

std::string makeOdc(const std::vector<RawMember>& members) {
    std::string archive;
    for (const RawMember& member : members) {
        appendOdc(archive, member);
    }
    appendOdc(archive, {"TRAILER!!!", 0, "", 0, 1, UINT64_MAX, 0});
    return archive;
}

std::string makeNewc(const std::vector<RawMember>& members) {
    std::string archive;
    for (const RawMember& member : members) {
        appendNewc(archive, member);
    }
    appendNewc(archive, {"TRAILER!!!", 0, "", 0, 1, UINT64_MAX, 0});
    return archive;
}

}  // namespace zpk_test
