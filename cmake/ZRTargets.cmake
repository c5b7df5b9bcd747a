# One function per kind of target. A layer sees only the headers of the layers that it links: each library has an
# include root of its own in the build tree that holds nothing but a link to the library's folder, so that an
# include that points upwards does not build.
include_guard()
include(GNUInstallDirs)

# Installed libraries find each other beside themselves, so that the installed tree may be moved.
if(APPLE)
    set(ZR_LIBRARY_RPATH "@loader_path")
else()
    set(ZR_LIBRARY_RPATH "$ORIGIN")
endif()

set(ZR_INCLUDE_INSTALL_DIR ${CMAKE_INSTALL_INCLUDEDIR}/ZRCommon-${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
define_property(GLOBAL PROPERTY ZR_LIBRARIES BRIEF_DOCS "Libraries that are installed" FULL_DOCS "Libraries")

# zr_add_precompiled_headers(NAME LIBRARIES lib... HEADERS header... [OPTIONS option...])
# Headers that many targets share: to precompile them takes longer than to compile any source, so that it is done once.
function(zr_add_precompiled_headers name)
    cmake_parse_arguments(arg "" "" "LIBRARIES;HEADERS;OPTIONS" ${ARGN})
    file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp CONTENT "")
    add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
    set_target_properties(${name} PROPERTIES AUTOMOC OFF)
    target_link_libraries(${name} PRIVATE ${arg_LIBRARIES})
    target_compile_options(${name} PRIVATE ${arg_OPTIONS})
    target_precompile_headers(${name} PRIVATE ${arg_HEADERS})
endfunction()

# zr_add_library(NAME FOLDER path [SUBFOLDERS folder...] DEPENDS lib...)
# All sources and headers of the current folder, and of those named in it, become library NAME, found as
# <FOLDER/Header.h>. Headers whose name ends in _p are private: no host sees them.
function(zr_add_library name)
    cmake_parse_arguments(arg "" "FOLDER" "SUBFOLDERS;DEPENDS;PRIVATE_DEPENDS" ${ARGN})
    set(folders . ${arg_SUBFOLDERS})
    list(TRANSFORM folders APPEND /*.cpp OUTPUT_VARIABLE source_patterns)
    list(TRANSFORM folders APPEND /*.h OUTPUT_VARIABLE header_patterns)
    file(GLOB sources CONFIGURE_DEPENDS ${source_patterns})
    file(GLOB headers RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} CONFIGURE_DEPENDS ${header_patterns})
    add_library(${name} SHARED ${sources} ${headers})
    add_library(ZRCommon::${name} ALIAS ${name})

    set(root ${CMAKE_BINARY_DIR}/include/${name})
    cmake_path(GET arg_FOLDER PARENT_PATH parent)
    file(MAKE_DIRECTORY ${root}/${parent})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${arg_FOLDER} SYMBOLIC)
    target_include_directories(${name} PUBLIC
        $<BUILD_INTERFACE:${root}> $<INSTALL_INTERFACE:${ZR_INCLUDE_INSTALL_DIR}>)
    target_link_libraries(${name} PUBLIC ${arg_DEPENDS} PRIVATE ${arg_PRIVATE_DEPENDS})
    target_compile_features(${name} PUBLIC cxx_std_20)
    target_precompile_headers(${name} REUSE_FROM library_headers)
    set_target_properties(${name} PROPERTIES
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR} WINDOWS_EXPORT_ALL_SYMBOLS ON
        INSTALL_RPATH "${ZR_LIBRARY_RPATH}")
    set_property(GLOBAL APPEND PROPERTY ZR_LIBRARIES ${name})

    list(FILTER headers EXCLUDE REGEX "_p\\.h$")
    set(public_headers)
    foreach(header IN LISTS headers)
        cmake_path(GET header PARENT_PATH folder)
        list(APPEND public_headers ${arg_FOLDER}/${header})
        install(FILES ${header} DESTINATION ${ZR_INCLUDE_INSTALL_DIR}/${arg_FOLDER}/${folder})
    endforeach()
    set_target_properties(${name} PROPERTIES ZR_PUBLIC_HEADERS "${public_headers}")
    install(TARGETS ${name} EXPORT ZRCommonTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endfunction()
