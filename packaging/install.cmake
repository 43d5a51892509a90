# The end of `cmake --install`. `programs` and `data` are folders, absolute or below the prefix;
# `packages` has the packed extension; `extension` is its identifier in
# Chromium; `made` is for files on their way.
foreach(folder IN ITEMS programs data)
    cmake_path(ABSOLUTE_PATH ${folder} BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" NORMALIZE)
endforeach()

set(program "${programs}/orvanta")
if("$ENV{DESTDIR}" STREQUAL "")
    # KWin compares it with what /proc says of the program.
    file(REAL_PATH "${program}" program)
    # What was cached of the icons is older from now on.
    file(TOUCH "${data}/icons/hicolor")
endif()
set(entry "${made}/com.brindlework.orvanta.desktop")
include("${CMAKE_CURRENT_LIST_DIR}/desktop_entry.cmake")
file(INSTALL "${entry}" DESTINATION "${data}/applications")

# Browsers look for what is there for everybody in these places only. With any other prefix each
# person is asked, and has the same in a folder of their own.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(host "${programs}/orvanta-browser-host")
    foreach(browser IN ITEMS chromium mozilla)
        configure_file("${CMAKE_CURRENT_LIST_DIR}/native-manifest-${browser}.json.in"
            "${made}/${browser}/com.brindlework.orvanta.json" @ONLY)
    endforeach()
    file(INSTALL "${made}/chromium/com.brindlework.orvanta.json"
        DESTINATION /etc/chromium/native-messaging-hosts)
    file(INSTALL "${made}/mozilla/com.brindlework.orvanta.json"
        DESTINATION /usr/lib/mozilla/native-messaging-hosts)
    # Debian's chromium loads each folder in here; its firefox-esr, each package there.
    file(INSTALL "${packages}/extension/" DESTINATION /usr/share/chromium/extensions/orvanta)
    file(INSTALL "${packages}/orvanta.xpi"
        DESTINATION "/usr/share/mozilla/extensions/{ec8030f7-c20a-464f-9b0e-13a3a9e97384}"
        RENAME orvanta@brindlework.com.xpi)
endif()
