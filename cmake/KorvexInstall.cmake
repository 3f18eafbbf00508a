# Where things are installed, and the CMake and pkg-config packages by which other projects find them.
#
# Nothing that is installed holds the prefix: programs, libraries and packages find each other from where they lie
# themselves. So a tree can be installed with another prefix or with DESTDIR, and be moved. For that to hold the folders
# below the prefix (CMAKE_INSTALL_BINDIR, CMAKE_INSTALL_LIBDIR and so on) have to be relative, as they are at first.
include(CMakePackageConfigHelpers)
if(NOT DEFINED CMAKE_INSTALL_DOCDIR)
    set(CMAKE_INSTALL_DOCDIR "share/doc/kwfilemanip" CACHE PATH "Documents (below the prefix)")
endif()
include(GNUInstallDirs)

# Before 1.0 every minor version may have another binary interface.
set(KORVEX_ABI_VERSION "${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}")
set(KORVEX_INCLUDE_FOLDER "${CMAKE_INSTALL_INCLUDEDIR}/korvex")
set(KORVEX_PACKAGE_FOLDER "${CMAKE_INSTALL_LIBDIR}/cmake/kwfilemanip")
file(RELATIVE_PATH KORVEX_LIBRARIES_FROM_PROGRAMS "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")

# What a host includes of the runtime, beside all of platform/. None of these needs a header that stays behind.
set(KORVEX_RUNTIME_HEADERS
    runtime/configuration/configuration_folder.h
    runtime/dispatcher/current_folder.h
    runtime/dispatcher/environment_events.h
    runtime/dispatcher/folder_views.h
    runtime/dispatcher/function_cache.h
    runtime/dispatcher/search_path.h
    runtime/interpreter/functions.h
    runtime/interpreter/interrupts.h
    runtime/interpreter/output.h
    runtime/interpreter/structure_display.h
    runtime/interpreter/warnings.h
    runtime/log/trace_output.h
    runtime/messages/environment_messages.h
    runtime/messages/locale.h
    runtime/packages/package_registry.h
    runtime/process/process.h
    runtime/storage/transfer_progress.h
    runtime/text/encoding.h)

# Versions, run paths, and the targets that only others use. To be called where all targets are known.
function(korvex_finish_targets)
    set_target_properties(kwruntime kwfilemanip PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${KORVEX_ABI_VERSION})
    if(NOT WIN32)
        set_target_properties(kwfilemanip PROPERTIES INSTALL_RPATH "$ORIGIN")
        set_target_properties(kwsh PROPERTIES INSTALL_RPATH "$ORIGIN/${KORVEX_LIBRARIES_FROM_PROGRAMS}")
    endif()

    # Inside of the project targets see the layers through korvex_include_layers, and nothing of this.
    add_library(kwfilemanip_platform INTERFACE)
    target_include_directories(kwfilemanip_platform INTERFACE $<INSTALL_INTERFACE:${KORVEX_INCLUDE_FOLDER}>)
    target_compile_features(kwfilemanip_platform INTERFACE cxx_std_20)
    target_link_libraries(kwfilemanip_platform INTERFACE Boost::headers)
    set_target_properties(kwfilemanip_platform PROPERTIES EXPORT_NAME platform)
    target_link_libraries(kwruntime INTERFACE kwfilemanip_platform)
    set_target_properties(kwruntime PROPERTIES EXPORT_NAME runtime)
    target_link_libraries(kwfilemanip INTERFACE kwruntime)

    # The module without the runtime: what it calls of platform/ is left to whoever links it.
    add_library(kwfilemanip_static STATIC $<TARGET_OBJECTS:kwfilemanip_objects>)
    target_link_libraries(kwfilemanip_static INTERFACE kwfilemanip_platform)
    set_target_properties(kwfilemanip_static PROPERTIES
        LINKER_LANGUAGE CXX EXPORT_NAME static ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
    if(NOT WIN32)
        set_target_properties(kwfilemanip_static PROPERTIES OUTPUT_NAME kwfilemanip)
    endif()
endfunction()

function(korvex_install_programs_and_libraries)
    install(TARGETS kwsh RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
    install(TARGETS kwfilemanip kwruntime EXPORT kwfilemanip
            RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
    install(TARGETS kwfilemanip_static kwfilemanip_platform EXPORT kwfilemanip
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
endfunction()

function(korvex_install_headers)
    install(DIRECTORY platform DESTINATION ${KORVEX_INCLUDE_FOLDER} COMPONENT development
            FILES_MATCHING PATTERN "*.h")
    foreach(header IN LISTS KORVEX_RUNTIME_HEADERS ITEMS io/filesystem/filemanip/module_entries.h)
        get_filename_component(folder "${header}" DIRECTORY)
        install(FILES "${header}" DESTINATION "${KORVEX_INCLUDE_FOLDER}/${folder}" COMPONENT development)
    endforeach()
endfunction()

function(korvex_install_packages)
    set(generated "${PROJECT_BINARY_DIR}/packages")
    install(EXPORT kwfilemanip NAMESPACE kwfilemanip:: FILE kwfilemanipTargets.cmake
            DESTINATION "${KORVEX_PACKAGE_FOLDER}" COMPONENT development)
    configure_package_config_file(cmake/kwfilemanipConfig.cmake.in "${generated}/kwfilemanipConfig.cmake"
                                  INSTALL_DESTINATION "${KORVEX_PACKAGE_FOLDER}" NO_SET_AND_CHECK_MACRO)
    write_basic_package_version_file("${generated}/kwfilemanipConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
    install(FILES "${generated}/kwfilemanipConfig.cmake" "${generated}/kwfilemanipConfigVersion.cmake"
            DESTINATION "${KORVEX_PACKAGE_FOLDER}" COMPONENT development)

    set(pkgconfig_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
    file(RELATIVE_PATH headers "/${pkgconfig_folder}" "/${KORVEX_INCLUDE_FOLDER}")
    foreach(package kwfilemanip kwruntime)
        configure_file(cmake/${package}.pc.in "${generated}/${package}.pc" @ONLY)
        install(FILES "${generated}/${package}.pc" DESTINATION "${pkgconfig_folder}" COMPONENT development)
    endforeach()
endfunction()

function(korvex_install_documents)
    install(FILES share/man/kwsh.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
    install(FILES share/bash-completion/kwsh DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
            COMPONENT tools)
    install(FILES docs/commands.md docs/kwsh.md docs/messages.md examples/tour.k
            DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT tools)
    install(FILES docs/embedding.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
    install(DIRECTORY examples/embedding DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT development)
endfunction()

# To be called at the end, from the project's root.
function(korvex_install)
    korvex_finish_targets()
    korvex_install_programs_and_libraries()
    korvex_install_headers()
    korvex_install_packages()
    korvex_install_documents()
endfunction()
