// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// The peer of the start-up benchmark: shows one empty window and ends when it has been painted,
// writing that time, in seconds of the monotonic clock, to the file that ZPK_STARTUP_TIME names.

#include <time.h>

#include <QApplication>
#include <QPaintEvent>
#include <QWidget>
#include <cstdio>
#include <cstdlib>

namespace {

class EmptyWindow : public QWidget {
protected:
    void paintEvent(QPaintEvent*) override {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC, &now);
        if (std::FILE* file = std::fopen(std::getenv("ZPK_STARTUP_TIME"), "w")) {
            std::fprintf(file, "%lld.%09ld\n", static_cast<long long>(now.tv_sec), now.tv_nsec);
            std::fclose(file);
        }
        QApplication::quit();
    }
};

}  // namespace

int main(int argc, char** argv) {
    if (std::getenv("ZPK_STARTUP_TIME") == nullptr) {
        return EXIT_FAILURE;
    }
    QApplication application(argc, argv);
    EmptyWindow window;
    window.resize(400, 100);
    window.show();
    return QApplication::exec();
}
