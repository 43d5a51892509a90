# One folder of src/ is one library, and it can include only the folders that it links.
#
# `#include "Model/Activity.h"` is found through an include directory that holds nothing but a link
# to src/Model. Each library brings its own such directory, so an include against the arrows of the
# design does not compile.

set(ORVANTA_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
    -Wcast-qual -Wundef -Wformat=2)

function(orvanta_compile_options target)
    target_compile_options(${target} PRIVATE ${ORVANTA_WARNINGS})
    target_compile_definitions(${target} PRIVATE
        QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS QT_NO_URL_CAST_FROM_STRING
        QT_NO_FOREACH QT_STRICT_ITERATORS)
endfunction()

# For a target that links the libraries whose headers these are.
function(orvanta_precompile target)
    if(ORVANTA_PRECOMPILE)
        target_precompile_headers(${target} PRIVATE ${ARGN})
    endif()
endfunction()

set(ORVANTA_COMMON_HEADERS <QObject> <QString> <QStringList> <functional> <map> <memory> <optional>
    <vector>)
set(ORVANTA_WIDGET_HEADERS <QApplication> <QPainter> <QWidget>)

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
    orvanta_precompile(${target} ${ORVANTA_COMMON_HEADERS})
    if("Qt6::Widgets" IN_LIST ROOM_LIBRARIES)
        orvanta_precompile(${target} ${ORVANTA_WIDGET_HEADERS})
    endif()

    # Every header compiles alone: what a source of its name includes first does so there.
    set(checks)
    foreach(source IN LISTS ROOM_SOURCES)
        string(REGEX REPLACE "\\.h$" ".cpp" own_source ${source})
        if(source MATCHES "\\.h$" AND NOT own_source IN_LIST ROOM_SOURCES)
            string(REPLACE "/" "_" check ${source})
            set(check ${PROJECT_BINARY_DIR}/headers/${name}/${check}.cpp)
            file(CONFIGURE OUTPUT ${check} CONTENT "#include \"${ROOM_FOLDER}/${source}\"\n")
            list(APPEND checks ${check})
        endif()
    endforeach()
    if(checks AND ORVANTA_HEADER_CHECKS)
        add_library(${target}Headers OBJECT ${checks})
        target_link_libraries(${target}Headers PRIVATE ${target} ${ROOM_PRIVATE_LIBRARIES})
        orvanta_compile_options(${target}Headers)
        target_compile_options(${target}Headers PRIVATE -g0) # Nobody runs them.
    endif()
endfunction()
