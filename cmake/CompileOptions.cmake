# What every target of the project is compiled with.
add_library(testmode_compile_options INTERFACE)
target_compile_features(testmode_compile_options INTERFACE cxx_std_17)
target_compile_options(testmode_compile_options INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
    -Woverloaded-virtual -Wformat=2 -Wundef -Werror>)
target_compile_definitions(testmode_compile_options INTERFACE
  QT_MESSAGELOGCONTEXT # source file and line stay in the trace of every build type
  QT_DEPRECATED_WARNINGS
  _FILE_OFFSET_BITS=64 # register addresses lie above 2 GiB: a 32-bit off_t cannot hold them
  $<$<NOT:$<CONFIG:Debug>>:QT_NO_DEBUG>
  $<$<BOOL:${TESTMODE_FORCE_ASSERTS}>:QT_FORCE_ASSERTS>)

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

# The tests are a hundred programs: linked in a third of the time where a faster linker is installed.
option(TESTMODE_FAST_LINKER "Link with mold where it is installed" OFF)
if(TESTMODE_FAST_LINKER)
  find_program(TESTMODE_MOLD ld.mold)
  if(TESTMODE_MOLD)
    add_link_options(-fuse-ld=mold)
    # A cross compiler looks for linkers in folders of its own, and where it is told to.
    if(CMAKE_CROSSCOMPILING)
      file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/linker)
      file(CREATE_LINK ${TESTMODE_MOLD} ${PROJECT_BINARY_DIR}/linker/ld.mold SYMBOLIC)
      add_link_options(-B${PROJECT_BINARY_DIR}/linker)
    endif()
  endif()
endif()
