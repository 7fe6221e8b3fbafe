# The code consists of layers, each with one folder and one object library. A test links only its subject's layer and
# lower ones, so an upward call does not link.

add_library(qz_options INTERFACE)
target_include_directories(qz_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/QzAnno_AnnotatedTextFramework/include)
# Assertions print file names relative to the project's folder, wherever it was built.
target_compile_options(qz_options INTERFACE "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")
target_compile_options(qz_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor -Woverloaded-virtual)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 falsely reports overlaps in every `"text" + std::string` of an optimised build.
  target_compile_options(qz_options INTERFACE -Wno-restrict)
endif()
if(QZANNO_WARNINGS_AS_ERRORS)
  target_compile_options(qz_options INTERFACE -Werror)
endif()
if(QZANNO_SANITIZE)
  add_compile_options(-fsanitize=${QZANNO_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QZANNO_SANITIZE})
endif()

# qz_layer(NAME SOURCES file... [LINKS library...]): an object library qz_NAME of the current folder. Headers beside the sources
# are private to the tree; a layer's public ones are in the folder of its name below include/QzAnno.
function(qz_layer name)
  cmake_parse_arguments(layer "" "" "SOURCES;LINKS" ${ARGN})
  add_library(qz_${name} OBJECT ${layer_SOURCES})
  target_link_libraries(qz_${name} PRIVATE qz_options PUBLIC ${layer_LINKS})
endfunction()

# qz_export_only(LIBRARY script): the shared library exports only the names in the linker's version script: no instance
# of a standard template, no type of a dependency.
function(qz_export_only library script)
  if(NOT APPLE)
    target_link_options(${library} PRIVATE LINKER:--version-script=${script})
    set_property(TARGET ${library} APPEND PROPERTY LINK_DEPENDS ${script})
  endif()
endfunction()

# qz_test(NAME SOURCES file... LAYERS layer... [LINKS library...]): a test program of the current folder.
function(qz_test name)
  cmake_parse_arguments(test "" "" "SOURCES;LAYERS;LINKS" ${ARGN})
  list(TRANSFORM test_LAYERS PREPEND qz_)
  add_executable(${name} ${test_SOURCES})
  target_link_libraries(${name} PRIVATE qz_options ${test_LAYERS} ${test_LINKS} GTest::gmock GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60)
endfunction()
