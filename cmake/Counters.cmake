# Counters of lines and branches for script/coverage, in the plug-in and the bench alone: what tests
# them is compiled as in every other build.
option(TESTMODE_COUNTERS "Count which lines and branches of plug-in and bench run" OFF)
set(TESTMODE_COUNTER_OPTIONS -O0 --coverage -fprofile-update=atomic -fprofile-abs-path)
if(TESTMODE_COUNTERS)
  add_link_options(--coverage -Wl,--exclude-libs,libgcov.a) # exports nothing of its own
endif()

# One target's sources.
function(testmode_counted target)
  if(TESTMODE_COUNTERS)
    target_compile_options(${target} PRIVATE ${TESTMODE_COUNTER_OPTIONS})
    target_link_options(${target} INTERFACE --coverage) # for who links them outside this project
  endif()
endfunction()

# The sources of all targets of a folder.
macro(testmode_counted_folder)
  if(TESTMODE_COUNTERS)
    add_compile_options(${TESTMODE_COUNTER_OPTIONS})
  endif()
endmacro()
