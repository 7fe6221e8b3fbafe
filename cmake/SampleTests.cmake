# qz_sample_test(NAME SOURCES file... LAYERS layer...): a test program that reads files which other programs wrote. They are not
# part of this tree; where a folder of them lies beside it, the tests find it in QZANNO_SAMPLES, else those tests are skipped.
function(qz_sample_test name)
  cmake_parse_arguments(test "" "" "SOURCES;LAYERS" ${ARGN})
  list(TRANSFORM test_LAYERS PREPEND qz_)
  add_executable(${name} ${test_SOURCES})
  target_link_libraries(${name} PRIVATE qz_options ${test_LAYERS} GTest::gmock GTest::gtest_main)
  set(samples ${PROJECT_SOURCE_DIR}/../shared/formats/samples)
  set(properties)
  if(IS_DIRECTORY ${samples})
    set(properties PROPERTIES ENVIRONMENT QZANNO_SAMPLES=${samples})
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 ${properties})
endfunction()
