# tovik_add_library(NAME SOURCES a.cpp b.cpp DEPS dep1 dep2)
# One static library per subsystem folder; include paths are rooted at src/
# so headers are included as "frame/variant.h".
function(tovik_add_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_DEPS})
endfunction()

# tovik_add_test(NAME SOURCES a_test.cpp DEPS lib1 lib2)
# A GoogleTest executable whose cases are registered with CTest one by one.
function(tovik_add_test name)
  if(WIN32)
    return()  # the Windows build is tested through its automation servers
  endif()
  cmake_parse_arguments(ARG "" "" "SOURCES;DEPS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE ${ARG_DEPS} GTest::gtest GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE TOVIK_SHARED_DIR="${PROJECT_SOURCE_DIR}/../shared"
                                             TOVIK_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()
