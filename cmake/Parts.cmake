# The parts of the product. The dependencies of enabled parts are required: only options leave parts out, never a
# missing dependency. The configuration ends with a list of what is built.

option(QZANNO_COMMAND_LINE "Build the command line" ON)
option(QZANNO_DESK "Build the composer and its library, over Qt 6" ON)
option(QZANNO_PYTHON "Build the Python module" ON)
option(QZANNO_COMPLETION "Generate shell completion for the programs" ON)
option(QZANNO_REFERENCE "Add the target \"reference\", which makes the API reference" ${PROJECT_IS_TOP_LEVEL})
option(QZANNO_BUILD_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL})
option(QZANNO_BUILD_BENCH "Build the benchmarks" OFF)
option(QZANNO_BUILD_PEERS "Build the benchmarks against other libraries" OFF)
option(QZANNO_BUILD_FUZZ "Build the fuzzers; see the preset \"fuzz\"" OFF)

# The part, as named in messages | its option | a target that exists if it is built.
set(QZANNO_PARTS
  "the C++ library||QzAnno"
  "the static C++ library||QzAnnoStatic"
  "the C library||QzAnnoC"
  "the command line|QZANNO_COMMAND_LINE|qzanno"
  "the desk|QZANNO_DESK|qzanno-composer"
  "the Python module|QZANNO_PYTHON|QzAnnoPython"
  "the completion for shells|QZANNO_COMPLETION|completion"
  "the API reference|QZANNO_REFERENCE|reference"
  "the tests|QZANNO_BUILD_TESTS|foundation_tests"
  "the benchmarks|QZANNO_BUILD_BENCH|qzanno_bench"
  "the benchmarks against other libraries|QZANNO_BUILD_PEERS|qzanno_peers"
  "the fuzzers|QZANNO_BUILD_FUZZ|fuzzers")

# qz_need(FOUND thing package [option]): stops the configuration unless FOUND is true. The message names the Debian
# package with the thing, and the option that leaves out the part that needs it; without an option, all parts need it.
function(qz_need found thing package)
  if(found)
    return()
  endif()
  set(way "")
  foreach(row ${QZANNO_PARTS})
    string(REPLACE "|" ";" row "${row}")
    list(GET row 0 part)
    list(GET row 1 option)
    if(option AND option STREQUAL "${ARGV3}")
      set(way ", or leave ${part} out with -D${option}=OFF")
    endif()
  endforeach()
  # CMake does not wrap lines that begin with a blank.
  message(FATAL_ERROR " QzAnno: ${thing} is not found: install the Debian package ${package}${way}\n")
endfunction()

# qz_find(NAME package argument...): find_package for what every part needs.
macro(qz_find name package)
  find_package(${name} QUIET ${ARGN})
  qz_need("${${name}_FOUND}" ${name} ${package})
endmacro()

# The same by pkg-config, which makes the target PkgConfig::NAME.
macro(qz_find_module name package)
  pkg_check_modules(${name} QUIET IMPORTED_TARGET ${name})
  qz_need("${${name}_FOUND}" ${name} ${package})
endmacro()

macro(qz_find_qt component package)
  find_package(Qt6 6.4 QUIET COMPONENTS ${component})
  qz_need("${Qt6${component}_FOUND}" "Qt 6.4 ${component}" ${package} QZANNO_DESK)
endmacro()

# qz_skips(tests reason): adds to the list tests that will be skipped on this machine.
function(qz_skips tests reason)
  set_property(GLOBAL APPEND PROPERTY QZANNO_SKIPPED_TESTS "${tests} (${reason})")
endfunction()

function(qz_list_parts)
  foreach(row ${QZANNO_PARTS})
    string(REPLACE "|" ";" row "${row}")
    list(GET row 0 part)
    list(GET row 1 option)
    list(GET row 2 target)
    string(REGEX REPLACE "^the " "" part "${part}")
    if(TARGET ${target})
      list(APPEND built "${part}")
    elseif(${option})
      list(APPEND left_out "${part} (by QZANNO_SANITIZE)")
    else()
      list(APPEND left_out "${part} (${option}=OFF)")
    endif()
  endforeach()
  get_property(skipped GLOBAL PROPERTY QZANNO_SKIPPED_TESTS)
  foreach(line "built;${built}" "left out;${left_out}" "tests that will be skipped;${skipped}")
    list(POP_FRONT line label)
    list(JOIN line ", " line)
    if(line)
      message(STATUS "QzAnno: ${label}: ${line}")
    endif()
  endforeach()
endfunction()
