# Compiler settings that every target of the project shares.
set(SR_SANITIZE "" CACHE STRING "Sanitizers to build with, as for -fsanitize (for example address,undefined)")

find_program(SR_CCACHE ccache)
if(SR_CCACHE)
  # Checkouts in different folders share the cache, and so do the uses of a precompiled header.
  set(launcher ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
    CCACHE_SLOPPINESS=pch_defines,time_macros ${SR_CCACHE})
  set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
  # Or clang's precompiled headers would be others each time.
  add_compile_options("$<$<COMPILE_LANG_AND_ID:CXX,Clang>:SHELL:-Xclang -fno-pch-timestamp>")
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>
  $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wthread-safety>)
# For tests and benchmarks, which have an object to themselves.
set(SR_WITHOUT_LOCKS $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wno-thread-safety>)
add_link_options(-Wl,--as-needed)
# The standard library's own checks of preconditions, in the builds that the tests run in.
add_compile_definitions($<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
if(SR_SANITIZE)
  add_compile_options(-fsanitize=${SR_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${SR_SANITIZE})
else()
  include(cmake/Hardening.cmake)
endif()

find_package(Threads REQUIRED)
link_libraries(Threads::Threads)
