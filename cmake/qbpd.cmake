# Helpers shared by every folder's CMakeLists.txt.

set(QBPD_WARNINGS -Wall -Wextra -Wpedantic -Wshadow=local -Wnon-virtual-dtor)
if(QBPD_WERROR)
  list(APPEND QBPD_WARNINGS -Werror)
endif()

if(QBPD_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer
                      -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()

# All unit-test executables hang off this target so that the sanitizer build
# can build just them.
if(NOT TARGET qbpd_unit_tests)
  add_custom_target(qbpd_unit_tests)
endif()

# qbpd_library(NAME <target> [SOURCES ...] [GLOB] [DEPS ...] [PRIVATE_DEPS ...])
# GLOB takes every .cpp file of the calling folder (not its subfolders).
function(qbpd_library)
  cmake_parse_arguments(ARG "GLOB" "NAME" "SOURCES;DEPS;PRIVATE_DEPS" ${ARGN})
  set(sources ${ARG_SOURCES})
  if(ARG_GLOB)
    file(GLOB globbed CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
    list(APPEND sources ${globbed})
  endif()
  add_library(${ARG_NAME} STATIC ${sources})
  target_include_directories(${ARG_NAME} PUBLIC ${PROJECT_SOURCE_DIR})
  target_compile_options(${ARG_NAME} PRIVATE ${QBPD_WARNINGS})
  target_link_libraries(${ARG_NAME} PUBLIC ${ARG_DEPS} PRIVATE ${ARG_PRIVATE_DEPS})
endfunction()

# qbpd_executable(NAME <target> SOURCES ... [DEPS ...])
function(qbpd_executable)
  cmake_parse_arguments(ARG "" "NAME" "SOURCES;DEPS" ${ARGN})
  add_executable(${ARG_NAME} ${ARG_SOURCES})
  target_compile_options(${ARG_NAME} PRIVATE ${QBPD_WARNINGS})
  target_link_libraries(${ARG_NAME} PRIVATE ${ARG_DEPS})
  install(TARGETS ${ARG_NAME} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  set_target_properties(${ARG_NAME} PROPERTIES QBPD_INSTALLED TRUE)
endfunction()

# qbpd_test(NAME <target> [LABEL unit|integration] [SOURCES ...] [GLOB] [DEPS ...])
# GLOB takes every *_test.cpp file of the calling folder. Unit tests must not
# need a network peer or a display; they run again under the sanitizers.
function(qbpd_test)
  cmake_parse_arguments(ARG "GLOB" "NAME;LABEL" "SOURCES;DEPS" ${ARGN})
  if(NOT ARG_LABEL)
    set(ARG_LABEL unit)
  endif()
  set(sources ${ARG_SOURCES})
  if(ARG_GLOB)
    file(GLOB globbed CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*_test.cpp)
    list(APPEND sources ${globbed})
  endif()
  add_executable(${ARG_NAME} ${sources})
  target_compile_options(${ARG_NAME} PRIVATE ${QBPD_WARNINGS})
  target_link_libraries(${ARG_NAME} PRIVATE ${ARG_DEPS} GTest::gtest_main GTest::gmock)
  gtest_discover_tests(${ARG_NAME}
    # A test that hangs fails after two minutes instead of holding up CI.
    PROPERTIES LABELS ${ARG_LABEL} TIMEOUT 120
    DISCOVERY_TIMEOUT 60)
  if(ARG_LABEL STREQUAL "unit")
    add_dependencies(qbpd_unit_tests ${ARG_NAME})
  endif()
endfunction()
