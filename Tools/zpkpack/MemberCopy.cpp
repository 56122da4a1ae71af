// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/MemberCopy.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <span>
#include <string>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKPath.h"
#include "Platform/ZPKStandardFolders.h"
#include "Tools/zpkpack/PackagerFailure.h"

namespace zpk_packager {

namespace {

constexpr std::uint64_t kLargestProgram = std::uint64_t{256} << 20;

ZPKFileDescriptor fileWithoutName() {
    const std::string folder = ZPKStandardFolders::temporaryFolder().value_or("/tmp");
    std::string path = ZPKPath::join(folder, ".zpk-program-XXXXXX");
    ZPKFileDescriptor file(::mkostemp(path.data(), O_CLOEXEC));
    if (!file.isOpen()) {
        throw PackagerFailure::ofSystem(folder, errno);
    }
    ::unlink(path.c_str());
    return file;
}

}  // namespace

zpk_archive::DataTaker MemberCopy::taker(std::uint64_t size) {
    if (size > kLargestProgram) {
        return {};
    }
    m_file = fileWithoutName();
    m_wanted = size;
    return [this](std::span<const std::uint8_t> piece) {
        const auto offset = static_cast<off_t>(m_size);
        if (!ZPKDescriptorIO::writeWholeAt(m_file.get(), piece.data(), piece.size(), offset)) {
            throw PackagerFailure("the setup program cannot be looked at", ZPKFailure::systemReason(errno));
        }
        m_size += piece.size();
    };
}

void MemberCopy::clear() {
    m_file = ZPKFileDescriptor();
    m_wanted = 0;
    m_size = 0;
}

}  // namespace zpk_packager
