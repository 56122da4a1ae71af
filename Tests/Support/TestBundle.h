// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <vector>

namespace zpk_test {

/// A launcher's bundle at `path` with a resource folder, the built archive tool and no archives,
/// made the main bundle of this process.
class TestBundle {
public:
    explicit TestBundle(const std::string& path);

    const std::string& path() const { return m_path; }

    /// Its name, which no other process's bundle carries: tests that run side by side must not take
    /// each other for a second run.
    static std::string name();
    std::string resource(const std::string& relative) const {
        return m_path + "/Contents/Resources/" + relative;
    }

    /// Packs `folder` (named `Info` or `Data`) into the scrambled archive `name`.
    void pack(const std::string& folder, const std::string& name) const;

    /// One member of an archive as it stands there; the contents of a link are its target.
    struct Member {
        std::string name;
        unsigned int mode;
        std::string contents;
    };

    /// Packs what no folder could be packed into, such as an `Info` that is a link.
    void packMembers(const std::vector<Member>& members, const std::string& name) const;

private:
    void scramble(const std::string& plain, const std::string& name) const;

    std::string m_path;
};

}  // namespace zpk_test
