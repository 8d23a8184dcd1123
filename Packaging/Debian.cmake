# The Debian packages, one per component. cpack makes them from a build with the prefix /usr.
set(packages quillet)
if(QUILLET_DESKTOP)
    list(APPEND packages quillet-desktop)
endif()

file(STRINGS debian/changelog newest LIMIT_COUNT 1)
if(NOT newest MATCHES "^quillet \\(${PROJECT_VERSION}-([0-9]+)\\)")
    message(FATAL_ERROR
        "Packaging/debian/changelog does not begin with version ${PROJECT_VERSION}: ${newest}")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_1})
compress(debian/changelog changelog.Debian)
foreach(package ${packages})
    installFor(${package} share/doc/${package}
        debian/copyright ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz
    )
    installFor(${package} share/lintian/overrides
        debian/${package}.lintian-overrides RENAME ${package}
    )
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillet)
set(CPACK_PACKAGE_CONTACT "ZENDRIK <quillet@zendrik.com>")
set(CPACK_COMPONENTS_ALL ${packages})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE quillet)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://zendrik.com/")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(about "Quillet shows how much of the usage allowance of four AI coding assistants
(Claude, Codex, Gemini, OpenCode) is used up, from what their own tools leave
in the home directory.")
set(CPACK_DEBIAN_QUILLET_PACKAGE_NAME quillet)
set(CPACK_DEBIAN_QUILLET_PACKAGE_DEPENDS ca-certificates)
set(CPACK_DEBIAN_QUILLET_PACKAGE_SUGGESTS quillet-desktop)
set(CPACK_DEBIAN_QUILLET_DESCRIPTION "usage of AI coding assistants, for terminals and scripts
${about}
.
This package has the command, for prompts, status bars, scripts and servers.")

set(version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
set(CPACK_DEBIAN_QUILLET-DESKTOP_PACKAGE_NAME quillet-desktop)
set(CPACK_DEBIAN_QUILLET-DESKTOP_PACKAGE_DEPENDS "quillet (= ${version})")
# On Wayland one of them is needed. Only with the first can windows be placed.
set(CPACK_DEBIAN_QUILLET-DESKTOP_PACKAGE_RECOMMENDS "xwayland | qt6-wayland")
set(CPACK_DEBIAN_QUILLET-DESKTOP_DESCRIPTION "usage of AI coding assistants, on the desktop
${about}
.
This package has the application: an item in the tray with a panel, and a bar
that floats above all windows.")
# Upgrades keep an administrator's changes of the autostart entry.
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/conffiles "/etc/xdg/autostart/${id}.desktop\n")
set(CPACK_DEBIAN_QUILLET-DESKTOP_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_BINARY_DIR}/conffiles)

include(CPack)
