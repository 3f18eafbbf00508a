# What all targets share: language level, warnings, sanitizers, and the helpers that make a layer's targets.
#
# Include paths are what keeps the layers apart. Every header is named by its path from the project's root,
# but no target sees the root itself: it sees a folder of links to just those layers that it may include.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# -Wmaybe-uninitialized, -Wrestrict: GCC 12 reports both inside std::string wherever it inlines enough of it.
add_library(korvex_options INTERFACE)
target_compile_options(korvex_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
    "$<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized;-Wno-restrict>"
    $<$<BOOL:${KORVEX_WARNINGS_AS_ERRORS}>:-Werror>)
if(KORVEX_SANITIZERS)
    target_compile_options(korvex_options INTERFACE
        -fsanitize=${KORVEX_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(korvex_options INTERFACE -fsanitize=${KORVEX_SANITIZERS})
endif()

# The folder through which a target sees exactly these layers (folders of the project's root).
function(korvex_include_layers target)
    string(JOIN "+" name ${ARGN})
    string(REPLACE "/" "_" name "${name}")
    set(view "${PROJECT_BINARY_DIR}/include/${name}")
    foreach(layer IN LISTS ARGN)
        get_filename_component(parent "${view}/${layer}" DIRECTORY)
        file(MAKE_DIRECTORY "${parent}")
        file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${layer}" "${view}/${layer}" SYMBOLIC)
    endforeach()
    target_include_directories(${target} PRIVATE "${view}")
endfunction()

# One folder of the runtime, as an object library that the shared library and the tests are made of.
#   korvex_runtime_folder(<name> SOURCES ... [LIBRARIES ...])
function(korvex_runtime_folder name)
    cmake_parse_arguments(FOLDER "" "" "SOURCES;LIBRARIES" ${ARGN})
    add_library(kwruntime_${name} OBJECT ${FOLDER_SOURCES})
    korvex_include_layers(kwruntime_${name} platform runtime)
    target_link_libraries(kwruntime_${name} PRIVATE korvex_options PUBLIC Boost::headers ${FOLDER_LIBRARIES})
    set_property(GLOBAL APPEND PROPERTY KORVEX_RUNTIME_FOLDERS kwruntime_${name})
endfunction()

# A GoogleTest executable over objects of the layers.
#   korvex_unit_test(<name> SOURCES ... LAYERS ... LIBRARIES ... [LABEL ...])
function(korvex_unit_test name)
    cmake_parse_arguments(TEST "" "LABEL" "SOURCES;LAYERS;LIBRARIES" ${ARGN})
    add_executable(${name} ${TEST_SOURCES})
    korvex_include_layers(${name} ${TEST_LAYERS} tests)
    target_link_libraries(${name} PRIVATE korvex_options ${TEST_LIBRARIES} GTest::gmock GTest::gtest_main
                                          Threads::Threads)
    set(properties ENVIRONMENT "LC_ALL=C.UTF-8" ENVIRONMENT_MODIFICATION "no_proxy=set:*")
    if(TEST_LABEL)
        list(APPEND properties LABELS "${TEST_LABEL}")
    endif()
    gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60 PROPERTIES ${properties})
endfunction()
