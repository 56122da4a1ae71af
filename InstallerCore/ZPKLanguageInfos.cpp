// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "InstallerCore/ZPKLanguageInfos.h"

#include <algorithm>
#include <memory>

#include "Description/CLanguageType.h"
#include "Description/CLanguagesType.h"
#include "Description/CZPKXMLLoader.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKMainBundle.h"
#include "Platform/ZPKPreferredLanguages.h"

using namespace varno_zpk;

namespace {

constexpr const char* kCodeKey = "Code";

}  // namespace

const ZPKLanguageInfos& ZPKLanguageInfos::infos() {
    static const ZPKLanguageInfos* const kSInfos = new ZPKLanguageInfos;
    return *kSInfos;
}

ZPKLanguageInfos::ZPKLanguageInfos() {
    for (const std::string& code : preferredLocalizationsFromLanguagesXML()) {
        _infos.push_back({{kCodeKey, code}});
    }
}

std::uint32_t ZPKLanguageInfos::languageCount() const {
    return static_cast<std::uint32_t>(_infos.size());
}

const std::string& ZPKLanguageInfos::languageAt(std::uint32_t index) const {
    return _infos.at(index).at(kCodeKey);
}

const ZPKLanguageInfos::PropertyList* ZPKLanguageInfos::propertyListWithLanguage(
    const std::string& code) const {
    const auto found = std::find_if(_infos.begin(), _infos.end(),
                                    [&code](const PropertyList& info) { return info.at(kCodeKey) == code; });
    return found == _infos.end() ? nullptr : &*found;
}

std::vector<std::string> ZPKLanguageInfos::preferredLocalizationsFromLanguagesXML() {
    const std::unique_ptr<const CLanguagesType> languages = CZPKXMLLoader::LoadLanguagesXML(
        ZPKPackageLayout::languageList(ZPKMainBundle::mainBundle().resourcePath()));
    std::vector<std::string> offered;
    if (languages) {
        for (const auto& language : languages->languages) {
            offered.push_back(language->code);
        }
    }
    return preferredLocalizations(std::move(offered), ZPKPreferredLanguages::current());
}

std::vector<std::string> ZPKLanguageInfos::preferredLocalizations(std::vector<std::string> offered,
                                                                  std::vector<std::string> preferred) {
    std::replace(preferred.begin(), preferred.end(), std::string("zh-Hans"), std::string("zh_CN"));
    std::vector<std::string> result;
    for (const std::string& code : preferred) {
        result.insert(result.end(), std::erase(offered, code), code);
    }
    return result;
}
