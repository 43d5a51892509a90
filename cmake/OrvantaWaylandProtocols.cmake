# What libwayland knows of a protocol beyond its core is code that wayland-scanner makes of the
# protocol's description.
pkg_get_variable(ORVANTA_WAYLAND_SCANNER wayland-scanner wayland_scanner)

# The library TARGET of these descriptions: NAME.h, and for a compositor NAME-server.h, of each
# NAME.xml.
function(orvanta_wayland_protocols target)
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/protocols)
    foreach(xml IN LISTS ARGN)
        cmake_path(GET xml STEM LAST_ONLY name)
        set(made ${folder}/${name})
        add_custom_command(OUTPUT ${made}.h ${made}-server.h ${made}.c
            COMMAND ${ORVANTA_WAYLAND_SCANNER} client-header ${xml} ${made}.h
            COMMAND ${ORVANTA_WAYLAND_SCANNER} server-header ${xml} ${made}-server.h
            COMMAND ${ORVANTA_WAYLAND_SCANNER} private-code ${xml} ${made}.c
            DEPENDS ${xml} VERBATIM)
        list(APPEND sources ${made}.h ${made}-server.h ${made}.c)
    endforeach()
    file(MAKE_DIRECTORY ${folder})
    add_library(${target} STATIC ${sources})
    target_include_directories(${target} SYSTEM PUBLIC ${folder})
    target_link_libraries(${target} PUBLIC PkgConfig::WAYLAND)
endfunction()
