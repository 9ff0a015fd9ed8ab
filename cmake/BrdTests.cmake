# Test labels, given by name so that tests added later fall in without a list to keep.
# Every test gets exactly one:
#   unit  quick and self-contained: the test binaries matched by BRD_UNIT_TEST_BINARIES;
#         `ctest -L unit` runs in a few seconds
#   e2e   every other test binary: the programs, pseudo-terminals, the simulated board
#   slow  single tests with fixed waits of half a second or more, matched by name
#         (BRD_SLOW_TESTS, gtest patterns) whatever their binary
set(BRD_UNIT_TEST_BINARIES
    "_render_test$"
    "^link_(frame|decoder)_test$"
    "^(front|table)_test$")
set(BRD_SLOW_TESTS
    "*Slow*"
    "*Timeout*"
    "*Pause*"
    "*TwentyTries*"
    "*HangUp*"
    "Simulator.FaultsChangeTheNextAnswer")

# Registers the GoogleTest cases of `target` with CTest, labelled as above.
function(brd_discover_tests target)
  set(kind e2e)
  foreach(pattern IN LISTS BRD_UNIT_TEST_BINARIES)
    if(target MATCHES "${pattern}")
      set(kind unit)
    endif()
  endforeach()
  list(JOIN BRD_SLOW_TESTS ":" slow)
  gtest_discover_tests(${target} TEST_FILTER "-${slow}" DISCOVERY_MODE PRE_TEST
                       DISCOVERY_TIMEOUT 30 PROPERTIES TIMEOUT 120 LABELS ${kind})
  gtest_discover_tests(${target} TEST_FILTER "${slow}" DISCOVERY_MODE PRE_TEST
                       DISCOVERY_TIMEOUT 30 PROPERTIES TIMEOUT 120 LABELS slow)
endfunction()
