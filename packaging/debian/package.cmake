# The Debian package: what `cmake --install --prefix /usr` puts there, and what Debian asks for
# besides. It has no maintainer scripts: menus and icon caches follow their own packages' triggers.
file(STRINGS debian/changelog first_line LIMIT_COUNT 1)
string(REGEX MATCH "\\(([^-]+)-(.+)\\)" _ "${first_line}")
if(NOT CMAKE_MATCH_1 STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "packaging/debian/changelog does not begin with ${PROJECT_VERSION}")
endif()
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS debian/changelog)

# In a component of its own, which no other installation has.
orvanta_compressed(${CMAKE_CURRENT_SOURCE_DIR}/debian/changelog changelog.Debian.gz)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz debian/copyright
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/orvanta COMPONENT debian EXCLUDE_FROM_ALL)

set(CPACK_GENERATOR DEB)
set(CPACK_INSTALL_CMAKE_PROJECTS
    "${PROJECT_BINARY_DIR};orvanta;ALL;/" "${PROJECT_BINARY_DIR};orvanta;debian;/")
# Some of it goes to fixed places outside the prefix.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)

set(CPACK_PACKAGE_NAME orvanta)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${CMAKE_MATCH_1})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_2})
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Orvanta maintainers <orvanta@brindlework.com>")
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "measures where your attention goes during the day")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Orvanta sits in the status area and measures, without anyone pressing a
button, which application is in front and, in a browser, which site; how much
of the day was production and how much consumption.

What is measured stays in one file of your own and is told to nobody.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What the libraries do not bring along: the part of Qt that speaks X11.
set(CPACK_DEBIAN_PACKAGE_DEPENDS qt6-qpa-plugins)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "default-dbus-session-bus | dbus-session-bus, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_ENHANCES "chromium, firefox-esr")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/debian/conffiles)
include(CPack)
