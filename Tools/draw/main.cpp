// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Makes a picture (PNG) with sides of so many points of a drawing (SVG). Run by zpkpack, on the libraries
// that the launcher template carries:
//
//   zephyrkit-draw DRAWING SIDE PICTURE
//
// The picture is not there yet. A drawing is somebody else's: it is drawn behind bounds.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>

#include "Base/ZPKDescriptorIO.h"
#include "Base/ZPKFailure.h"
#include "Base/ZPKFileDescriptor.h"
#include "Base/ZPKParentProcess.h"
#include "Base/ZPKRegularFile.h"
#include "Base/ZPKTerminalText.h"
#include "Tools/draw/DrawingCage.h"
#include "Tools/draw/DrawnPicture.h"

namespace {

constexpr int kArgumentCount = 4;
constexpr int kWrongUsage = 2;
constexpr std::size_t kLargestDrawing = std::size_t{1} << 20;
constexpr mode_t kFileMode = 0644;

[[noreturn]] void failOfSystem(const std::string& path) {
    throw std::runtime_error(ZPKFailure::ofSystem(path, errno).message());
}

void makePicture(const std::string& drawing, int side, const std::string& picture) {
    const std::optional<std::string> bytes = ZPKRegularFile::contents(drawing, kLargestDrawing);
    if (!bytes) {
        failOfSystem(drawing);
    }
    ZPKFileDescriptor file(ZPKDescriptorIO::retry(
        [&] { return ::open(picture.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode); }));
    if (!file.isOpen()) {
        failOfSystem(picture);
    }
    const std::string made = DrawnPicture::ofDrawing(*bytes, side, DrawingCage::enter);
    if (!ZPKDescriptorIO::writeWhole(file.get(), made) || !file.close()) {
        failOfSystem(picture);
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
    // The toolkit can be told much by variables, nothing of which is meant for this.
    ::clearenv();
    try {
        makePicture(argv[1], std::stoi(argv[2]), argv[3]);
        return EXIT_SUCCESS;
    } catch (const std::exception& failure) {
        const std::string line = "zephyrkit-draw: " + ZPKTerminalText::printable(failure.what()) + "\n";
        // There is nobody left to tell when it cannot be written.
        static_cast<void>(ZPKDescriptorIO::writeWhole(STDERR_FILENO, line));
        return EXIT_FAILURE;
    }
}
