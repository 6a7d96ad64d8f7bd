# The shared library zrbase: every source of the library folders under zrbase/, one class per header and source.
# Users include the headers as <zrbase/folder/Class.h>, from the source tree as from an installed one.
set(ZR_LIBRARY_FOLDERS host core file audio dsp codec automation formatters plugins app)

set(ZR_SOURCES)
set(ZR_PUBLIC_HEADERS)
foreach(folder IN LISTS ZR_LIBRARY_FOLDERS)
    file(GLOB_RECURSE folder_sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/zrbase/${folder}/*.cpp")
    file(GLOB_RECURSE folder_headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/zrbase/${folder}/*.h")
    list(APPEND ZR_SOURCES ${folder_sources})
    list(APPEND ZR_PUBLIC_HEADERS ${folder_headers})
endforeach()
# Headers ending in "Private.h" stay inside the library.
set(ZR_HEADERS ${ZR_PUBLIC_HEADERS})
list(FILTER ZR_PUBLIC_HEADERS EXCLUDE REGEX "Private\\.h$")

add_library(zrbase SHARED ${ZR_SOURCES})
add_library(ZRBase::zrbase ALIAS zrbase)
target_compile_definitions(zrbase PRIVATE ZR_BUILDING_LIBRARY
    ZR_SOURCE_RESOURCES="${PROJECT_SOURCE_DIR}/resources"
    ZR_BUILD_RESOURCES="${PROJECT_BINARY_DIR}/resources"
    ZR_INSTALL_RESOURCES="${CMAKE_INSTALL_FULL_DATADIR}/zrbase")
# Calls between the library's own exported functions go straight to them (and may be inlined) instead of through
# the procedure linkage table: nothing is meant to interpose them.
target_compile_options(zrbase PRIVATE -fno-semantic-interposition)
target_include_directories(zrbase PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_libraries(zrbase
    PUBLIC Threads::Threads
    PRIVATE PkgConfig::PLIST PkgConfig::UUID PkgConfig::FFTW3F PkgConfig::FFMPEG PkgConfig::SOXR OpenSSL::Crypto
        EXPAT::EXPAT PkgConfig::LILV ${CMAKE_DL_LIBS})
set_target_properties(zrbase PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    OUTPUT_NAME zrbase)
add_dependencies(zrbase zrbase-resources)

# Installation: library, headers in their folders, CMake package and pkg-config file.
include(CMakePackageConfigHelpers)
install(TARGETS zrbase EXPORT ZRBaseTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
foreach(header IN LISTS ZR_PUBLIC_HEADERS)
    file(RELATIVE_PATH relative "${PROJECT_SOURCE_DIR}" "${header}")
    get_filename_component(folder "${relative}" DIRECTORY)
    install(FILES "${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}")
endforeach()
install(EXPORT ZRBaseTargets NAMESPACE ZRBase:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZRBase)
configure_package_config_file(cmake/ZRBaseConfig.cmake.in "${PROJECT_BINARY_DIR}/ZRBaseConfig.cmake"
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZRBase)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ZRBaseConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/ZRBaseConfig.cmake" "${PROJECT_BINARY_DIR}/ZRBaseConfigVersion.cmake"
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZRBase)
# The pkg-config file finds its prefix relative to itself, so an installed tree can be moved.
file(RELATIVE_PATH ZR_PC_PREFIX_FROM_PCFILEDIR "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/zrbase.pc.in "${PROJECT_BINARY_DIR}/zrbase.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/zrbase.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The layers are a fact of the build: the library is not built while a source includes a header of a layer above
# or beside its own (cmake/ZRCheckLayers.cmake lists them).
set(ZR_LAYER_STAMP "${PROJECT_BINARY_DIR}/zrbase-layers.stamp")
file(GLOB_RECURSE ZR_UI_FILES CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/zrbase-ui/*.h" "${PROJECT_SOURCE_DIR}/zrbase-ui/*.cpp")
add_custom_command(OUTPUT "${ZR_LAYER_STAMP}"
    COMMAND ${CMAKE_COMMAND} -DROOT=${PROJECT_SOURCE_DIR} -DSTAMP=${ZR_LAYER_STAMP}
        -P "${PROJECT_SOURCE_DIR}/cmake/ZRCheckLayers.cmake"
    DEPENDS ${ZR_SOURCES} ${ZR_HEADERS} ${ZR_UI_FILES} "${PROJECT_SOURCE_DIR}/cmake/ZRCheckLayers.cmake"
    COMMENT "Checking the library's layers")
add_custom_target(zrbase-layers DEPENDS "${ZR_LAYER_STAMP}")
add_dependencies(zrbase zrbase-layers)
