// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Makes pictures of all windows that a launcher with the package's texts can show. Run by zpkpack, on the
// libraries that the launcher template carries:
//
//   zephyrkit-preview STAGE LANGUAGE FOLDER SCALE light|dark
//
// The stage is a bundle's folder with the package's name, forms and texts, and its folder Info beside them

#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Base/ZPKParentProcess.h"
#include "Description/CTargetItemsType.h"
#include "Description/CUpdateInfoType.h"
#include "Description/CZPKXMLLoader.h"
#include "Package/ZPKPackageLayout.h"
#include "Platform/ZPKBundle.h"
#include "Platform/ZPKMainBundle.h"
#include "Tools/preview/HeldWords.h"
#include "Tools/preview/LauncherScenes.h"
#include "Tools/preview/OffscreenDesktop.h"
#include "Tools/preview/PictureWriter.h"

namespace {

constexpr int kArgumentCount = 6;
constexpr int kWrongUsage = 2;

/// What the package's launcher would list.
std::vector<std::string> productsOf(const std::string& stage) {
    const std::unique_ptr<varno_zpk::CUpdateInfoType> info(
        varno_zpk::CZPKXMLLoader::LoadConditionXML(ZPKPackageLayout::conditionDescription(stage)));
    return info && info->targetItems ? info->targetItems->GetDisplayNameList() : std::vector<std::string>();
}

void makePictures(const std::vector<std::string>& arguments) {
    const ZPKBundle bundle = ZPKBundle::bundleWithoutDescription(arguments[0]);
    ZPKMainBundle::setMainBundle(bundle);
    const OffscreenDesktop::Look look{std::stoi(arguments[3]), arguments[4] == "dark"
                                                                   ? OffscreenDesktop::Palette::Dark
                                                                   : OffscreenDesktop::Palette::Light};
    const std::unique_ptr<ZPKFrontEnd> frontEnd =
        OffscreenDesktop::open(bundle.resourcePath(), bundle.localizedName(), arguments[1], look);
    const PictureWriter pictures(arguments[2]);
    LauncherScenes scenes(*frontEnd, pictures, productsOf(arguments[0]));
    const int status = frontEnd->run(scenes);
    if (!scenes.failure().empty()) {
        throw std::runtime_error(scenes.failure());
    }
    if (status != EXIT_SUCCESS) {
        throw std::runtime_error("the windows cannot be shown");
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (!ZPKParentProcess::endWithIt()) {
        return EXIT_FAILURE;
    }
    if (argc != kArgumentCount) {
        return kWrongUsage;
    }
    const HeldWords words;
    try {
        makePictures({argv + 1, argv + argc});
        return EXIT_SUCCESS;
    } catch (const std::exception& failure) {
        words.tell(failure.what());
        return EXIT_FAILURE;
    }
}
