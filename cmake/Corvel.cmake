# Helpers shared by every subsystem and test folder, so that adding an area means adding
# one folder with a three-line CMakeLists.txt.

if(APPLE)
  set(CORVEL_PLATFORM macos)
else()
  set(CORVEL_PLATFORM linux)
endif()

set(CORVEL_CORE_DIR ${CMAKE_SOURCE_DIR}/CorvelCore)

function(corvel_warnings target)
  if(MSVC)
    return()
  endif()
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                                           -Wold-style-cast -Wcast-align -Woverloaded-virtual)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # g++ 12 at -O2/-O3 reports impossible bounds inside libstdc++'s own std::string code
    # (GCC bugs 105329, 105651) and uninitialised std::optional members it cannot follow (80635);
    # they are not ours to fix and would fail every release build.
    target_compile_options(${target} PRIVATE -Wno-stringop-overflow -Wno-stringop-overread -Wno-restrict
                                             -Wno-array-bounds -Wno-maybe-uninitialized)
  endif()
  if(CORVEL_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# corvel_library(NAME DIR <subdir> [DEPS ...] [PLATFORM_SOURCES ...])
# Globs CorvelCore/<subdir>/*.cpp; PLATFORM_SOURCES are relative to CorvelCore/platform/<os>/.
function(corvel_library name)
  cmake_parse_arguments(ARG "" "DIR" "DEPS;PLATFORM_SOURCES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CORVEL_CORE_DIR}/${ARG_DIR}/*.cpp)
  foreach(src IN LISTS ARG_PLATFORM_SOURCES)
    list(APPEND sources ${CORVEL_CORE_DIR}/platform/${CORVEL_PLATFORM}/${src})
  endforeach()
  add_library(${name} STATIC ${sources})
  target_include_directories(${name} PUBLIC ${CORVEL_CORE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_DEPS})
  corvel_warnings(${name})
endfunction()

# corvel_test(NAME SOURCES ... LIBS ...): one GoogleTest executable per area, each test
# registered with ctest on its own so a failure names the test.
function(corvel_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} corvel_test_support GTest::gmock GTest::gtest_main Threads::Threads)
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  target_compile_definitions(${name} PRIVATE
    CORVEL_FIXTURES_DIR="${CMAKE_SOURCE_DIR}/tests/fixtures"
    CORVEL_VELMORA_BINARY="$<TARGET_FILE:velmora>")
  corvel_warnings(${name})
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60)
endfunction()

# corvel_embed_resources(TARGET NAMESPACE <ns> HEADER <include> FROM <description> FILES <path>...)
# Text files people edit as they are (HTML, CSS, SVG) become byte arrays compiled into TARGET at
# configure time, each behind `std::string_view <ns>::<file_name_as_identifier>()`, so nothing
# beside the binary is needed at run time. Editing a file reconfigures.
function(corvel_embed_resources target)
  cmake_parse_arguments(ARG "" "NAMESPACE;HEADER;FROM" "FILES" ${ARGN})
  string(REPLACE "::" "_" source_name ${ARG_NAMESPACE})
  set(resource_source ${CMAKE_CURRENT_BINARY_DIR}/${source_name}.cpp)
  set(resource_text "// Generated from ${ARG_FROM} at configure time.\n#include \"${ARG_HEADER}\"\n\nnamespace ${ARG_NAMESPACE} {\n")
  foreach(resource_path IN LISTS ARG_FILES)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${resource_path})
    file(READ ${resource_path} bytes HEX)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
    get_filename_component(resource ${resource_path} NAME)
    string(MAKE_C_IDENTIFIER ${resource} identifier)
    string(APPEND resource_text "namespace {\nconst char ${identifier}_bytes[] = {${bytes}};\n}\n")
    string(APPEND resource_text "std::string_view ${identifier}() { return {${identifier}_bytes, sizeof ${identifier}_bytes}; }\n")
  endforeach()
  string(APPEND resource_text "}  // namespace ${ARG_NAMESPACE}\n")
  file(CONFIGURE OUTPUT ${resource_source} CONTENT "${resource_text}")
  target_sources(${target} PRIVATE ${resource_source})
endfunction()
