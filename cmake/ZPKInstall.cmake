# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

# What `cmake --install` puts where: the packager, what it needs to make packages, and what explains it. Places are
# relative to the prefix, which may be moved afterwards: the packager finds its parts from where it is.

include(GNUInstallDirs)

set(ZPK_PARTS_FOLDER lib/zephyrkit)
set(ZPK_ZSH_FOLDER share/zsh/site-functions CACHE STRING
  "Where completions for zsh go, below the prefix; Debian's own packages use share/zsh/vendor-completions")
file(RELATIVE_PATH ZPK_PARTS_FROM_PROGRAM /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${ZPK_PARTS_FOLDER})

# To be called when all targets are known.
function(zpk_install)
  install(TARGETS zpkpack RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(PROGRAMS $<TARGET_FILE:zephyrkit-run> DESTINATION ${ZPK_PARTS_FOLDER})
  install(DIRECTORY ${ZPK_TEMPLATE_BUNDLE} DESTINATION ${ZPK_PARTS_FOLDER} USE_SOURCE_PERMISSIONS)
  # To begin own texts with.
  install(DIRECTORY Resources/UILang DESTINATION share/zephyrkit)
  install(FILES README.md CHANGELOG.md LICENSE DESTINATION share/doc/zephyrkit)
  install(DIRECTORY Docs DESTINATION share/doc/zephyrkit)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/Pages/man DESTINATION share)
  install(FILES ${PROJECT_BINARY_DIR}/Pages/completions/zpkpack.bash
    DESTINATION share/bash-completion/completions RENAME zpkpack)
  install(FILES ${PROJECT_BINARY_DIR}/Pages/completions/_zpkpack DESTINATION ${ZPK_ZSH_FOLDER})
  install(FILES ${PROJECT_BINARY_DIR}/Pages/completions/zpkpack.fish
    DESTINATION share/fish/vendor_completions.d)
endfunction()
