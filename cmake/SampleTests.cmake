# qz_sample_test(NAME SOURCES file... LAYERS layer... [LINKS library...]): a test program that reads files written by
# other programs. These are not part of this tree; if a folder of them exists beside it, QZANNO_SAMPLES gives its path,
# otherwise those tests are skipped.
function(qz_sample_test name)
  cmake_parse_arguments(test "" "" "SOURCES;LAYERS;LINKS" ${ARGN})
  list(TRANSFORM test_LAYERS PREPEND qz_)
  add_executable(${name} ${test_SOURCES})
  target_link_libraries(${name} PRIVATE qz_options ${test_LAYERS} ${test_LINKS} GTest::gmock GTest::gtest_main)
  set(samples ${PROJECT_SOURCE_DIR}/../shared/formats/samples)
  set(properties)
  if(IS_DIRECTORY ${samples})
    set(properties PROPERTIES ENVIRONMENT QZANNO_SAMPLES=${samples})
  else()
    qz_skips("files of other programs in ${name}" "set QZANNO_SAMPLES to a folder of them")
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 ${properties})
endfunction()
