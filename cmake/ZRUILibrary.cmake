# The interface toolkit zrbase-ui: the one library that includes Qt 6. Its headers sit in zrbase-ui/ at the top of
# the tree and are included as <zrbase-ui/Class.h>, from the source tree as from an installed one. It has a CMake
# target of its own (ZRBase::zrbase-ui, exported with the ZRBase package) and a pkg-config file, zrbase-ui.pc.
file(GLOB ZR_UI_SOURCES CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/zrbase-ui/*.cpp")
file(GLOB ZR_UI_HEADERS CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/zrbase-ui/*.h")
list(FILTER ZR_UI_HEADERS EXCLUDE REGEX "Private\\.h$")

add_library(zrbase-ui SHARED ${ZR_UI_SOURCES})
add_library(ZRBase::zrbase-ui ALIAS zrbase-ui)
target_compile_definitions(zrbase-ui PRIVATE ZR_BUILDING_LIBRARY)
target_include_directories(zrbase-ui PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_link_libraries(zrbase-ui PUBLIC zrbase Qt6::Widgets)
set_target_properties(zrbase-ui PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    OUTPUT_NAME zrbase-ui)

install(TARGETS zrbase-ui EXPORT ZRBaseUITargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${ZR_UI_HEADERS} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/zrbase-ui")
install(EXPORT ZRBaseUITargets NAMESPACE ZRBase:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/ZRBase)
configure_file(cmake/zrbase-ui.pc.in "${PROJECT_BINARY_DIR}/zrbase-ui.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/zrbase-ui.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
