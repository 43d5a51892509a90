# One folder of src/ is one library, and it can include only the folders that it links.
#
# `#include "Model/Activity.h"` is found through an include directory that holds nothing but a link
# to src/Model. Each library brings its own such directory, so an include against the arrows of the
# design does not compile.

set(ORVANTA_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    -Wcast-qual -Wundef -Wformat=2
    # What a source keeps to itself is nobody else's, though the sources of a room are joined.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)

function(orvanta_compile_options target)
    target_compile_options(${target} PRIVATE ${ORVANTA_WARNINGS})
    target_compile_definitions(${target} PRIVATE
        QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_URL_CAST_FROM_STRING
        QT_NO_FOREACH QT_STRICT_ITERATORS)
endfunction()

# orvanta_room(Model SOURCES a.cpp b.h ... ROOMS Platform ... LIBRARIES Qt6::Core ...
#              [PRIVATE_LIBRARIES SQLite::SQLite3 ...] [FOLDER Views/Text])
#
# The folder is the one of its name unless another is given.
function(orvanta_room name)
    cmake_parse_arguments(ROOM "" "FOLDER" "SOURCES;ROOMS;LIBRARIES;PRIVATE_LIBRARIES" ${ARGN})
    set(target Orvanta${name})
    if(NOT ROOM_FOLDER)
        set(ROOM_FOLDER ${name})
    endif()

    set(door ${PROJECT_BINARY_DIR}/rooms/${name})
    cmake_path(GET ROOM_FOLDER PARENT_PATH parent)
    file(MAKE_DIRECTORY ${door}/${parent})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${ROOM_FOLDER} ${door}/${ROOM_FOLDER} SYMBOLIC)

    add_library(${target} STATIC ${ROOM_SOURCES})
    target_include_directories(${target} PUBLIC ${door})
    list(TRANSFORM ROOM_ROOMS PREPEND Orvanta)
    target_link_libraries(${target}
        PUBLIC ${ROOM_ROOMS} ${ROOM_LIBRARIES} PRIVATE ${ROOM_PRIVATE_LIBRARIES})
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    orvanta_compile_options(${target})

    if(ORVANTA_HEADER_CHECKS)
        orvanta_check_headers(${target} ${ROOM_FOLDER} ${ROOM_SOURCES})
        target_link_libraries(${target}Headers PRIVATE ${ROOM_PRIVATE_LIBRARIES})
    endif()
endfunction()

# A source for every header of the room, by which script/lint sees that the header compiles alone: the
# room's own sources are joined, and would not tell.
function(orvanta_check_headers target folder)
    set(checks)
    list(FILTER ARGN INCLUDE REGEX "\\.h$")
    foreach(header IN LISTS ARGN)
        string(REPLACE "/" "_" check ${header})
        set(check ${PROJECT_BINARY_DIR}/headers/${target}/${check}.cpp)
        file(CONFIGURE OUTPUT ${check} CONTENT "#include \"${folder}/${header}\"\n")
        list(APPEND checks ${check})
    endforeach()
    add_library(${target}Headers OBJECT EXCLUDE_FROM_ALL ${checks})
    target_link_libraries(${target}Headers PRIVATE ${target})
    orvanta_compile_options(${target}Headers)
    set_target_properties(${target}Headers PROPERTIES UNITY_BUILD OFF)
endfunction()
