# What every target of the project shares: warnings, sanitizers, include root, and the short forms
# for a room's library and a test program.

add_library(quennel_options INTERFACE)
target_include_directories(quennel_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(
  quennel_options
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wconversion
            -Wold-style-cast
            -Wnon-virtual-dtor
            -Woverloaded-virtual
            # Of GCC 12: a false alarm on joining texts.
            $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
            $<$<BOOL:${QUENNEL_WERROR}>:-Werror>)
# The helper waits for most of its life: small code and relocations, and none that is not called, keep it
# out of the way of others.
target_link_options(quennel_options
                    INTERFACE $<$<CONFIG:Release>:-Wl,--gc-sections,-z,pack-relative-relocs>)

if(QUENNEL_SANITIZE)
  target_compile_options(quennel_options INTERFACE -fsanitize=${QUENNEL_SANITIZE}
                                                   -fno-omit-frame-pointer)
  target_link_options(quennel_options INTERFACE -fsanitize=${QUENNEL_SANITIZE})
endif()

# quennel_library(NAME [LINK libraries...]): a static library of all sources of the current folder
# (not of the folders below it); a folder of headers alone gives an interface library.
function(quennel_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK;EXCLUDE")
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  foreach(excluded IN LISTS arg_EXCLUDE)
    list(REMOVE_ITEM sources ${CMAKE_CURRENT_SOURCE_DIR}/${excluded})
  endforeach()
  if(sources)
    add_library(${name} STATIC ${sources})
    target_link_libraries(${name} PUBLIC quennel_options ${arg_LINK})
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE quennel_options ${arg_LINK})
  endif()
endfunction()

# quennel_test(NAME LABELS labels... [LINK libraries...]): a test program of all sources of the
# current folder. Each of its tests becomes a CTest test that carries the labels.
function(quennel_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "LABELS;LINK;SOURCES;ENVIRONMENT")
  if(NOT arg_SOURCES)
    file(GLOB arg_SOURCES CONFIGURE_DEPENDS *.cpp)
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 60)
  endif()
  if(NOT arg_ENVIRONMENT)
    # A program that ends with its threads running would be watched for another second.
    set(arg_ENVIRONMENT TSAN_OPTIONS=atexit_sleep_ms=0)
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE quennel_test_support ${arg_LINK})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60)
  # gtest_discover_tests takes apart properties that are lists; they are set once ctest has read the
  # list of tests, which is empty while the program is not built.
  file(
    CONFIGURE
    OUTPUT ${name}_properties.cmake
    CONTENT
      [[if(@name@_TESTS)
  set_tests_properties(
    ${@name@_TESTS}
    PROPERTIES LABELS "@arg_LABELS@" TIMEOUT @arg_TIMEOUT@ ENVIRONMENT "@arg_ENVIRONMENT@")
endif()
]]
    @ONLY)
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES
                                         ${CMAKE_CURRENT_BINARY_DIR}/${name}_properties.cmake)
endfunction()

# quennel_add_subdirectories(): every folder directly below the current one that has a build file.
function(quennel_add_subdirectories)
  file(GLOB build_files CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} */CMakeLists.txt)
  foreach(build_file IN LISTS build_files)
    get_filename_component(folder ${build_file} DIRECTORY)
    add_subdirectory(${folder})
  endforeach()
endfunction()

# quennel_benchmark(NAME [LINK libraries...] [SOURCES files...]): the program bench/NAME/NAME of the build
# tree, from all sources of the current folder and the further ones named.
function(quennel_benchmark name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LINK;SOURCES")
  file(GLOB sources CONFIGURE_DEPENDS *.cpp)
  add_executable(bench_${name} ${sources} ${arg_SOURCES})
  target_link_libraries(bench_${name} PRIVATE quennel_options ${arg_LINK})
  set_target_properties(bench_${name} PROPERTIES OUTPUT_NAME ${name} RUNTIME_OUTPUT_DIRECTORY
                                                                     ${CMAKE_CURRENT_BINARY_DIR})
endfunction()
