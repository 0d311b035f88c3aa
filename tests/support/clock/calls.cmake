# The calls of the C library that the clock stands in the place of (clockcalls.cpp): the shared
# libraries of a program find the program's own only where they are exported.
set(TESTMODE_CLOCK_LINK_OPTIONS)
foreach(call IN ITEMS
    clock_gettime gettimeofday time nanosleep clock_nanosleep usleep poll ppoll
    pthread_cond_wait pthread_cond_timedwait pthread_cond_clockwait
    pthread_cond_signal pthread_cond_broadcast pthread_create pthread_join syscall)
  list(APPEND TESTMODE_CLOCK_LINK_OPTIONS -Wl,--export-dynamic-symbol=${call})
endforeach()
