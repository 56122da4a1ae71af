// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <optional>
#include <string>

#include "Platform/ZPKFileHandle.h"
#include "Tools/zpkpack/MadePackage.h"

namespace zpk_packager {

/// A bundle on disk. Links in it are seen and not followed.
class MadeBundle : public MadePackage {
public:
    explicit MadeBundle(const std::string& path);

    std::size_t read(const Item& file, std::uint64_t offset, void* bytes, std::size_t count) override;

private:
    /// The file that was read last, since the next reading is mostly of the same.
    std::string m_openPath;
    std::optional<ZPKFileHandle> m_open;
};

}  // namespace zpk_packager
