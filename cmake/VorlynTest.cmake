# vorlyn_add_test(<name> [DISPLAY] [NETWORK] [SOUND] [PRINTING] SOURCES ... LIBRARIES ...
#                 [TIMEOUT seconds] [ENVIRONMENT ...] [NOT_ON_WINDOWS reason])
# One test program in a folder of its own, as the program's settings, log and language lie beside
# the program file. DISPLAY: runs on a screen of its own with a window manager.
# NETWORK: runs in a private network with a second namespace for cameras. SOUND: plays to a sound
# server of its own that can be listened to. PRINTING: prints to a print server of its own whose
# jobs become files (tests/support/run-test.sh). NOT_ON_WINDOWS: what the program needs that Wine
# doesn't offer; the tests left out so stand in the build folder's file not-on-windows.txt.
if(WIN32)
  file(WRITE ${CMAKE_BINARY_DIR}/not-on-windows.txt "")
endif()
# With sanitizers a test's own code takes three times as long to compile when it is optimised and each
# use of a pointer is checked; what is tested keeps both. After project_options.
add_library(test_options INTERFACE)
if(VORLYN_SANITIZE)
  target_compile_options(test_options INTERFACE
    $<$<CONFIG:Debug>:-O0> -fno-sanitize=null,alignment,object-size,vptr)
endif()

# Blocks of thread-local memory are reachable without being watched, and the sanitizer's own guess
# at where one of 16 bytes lies makes its search for leaks crash now and then.
set(vorlyn_sanitizer_environment
  ASAN_OPTIONS=intercept_tls_get_addr=0
  LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/support/lsan.supp:print_suppressions=0
  UBSAN_OPTIONS=print_stacktrace=1)
function(vorlyn_add_test name)
  cmake_parse_arguments(T "DISPLAY;NETWORK;SOUND;PRINTING" "TIMEOUT;NOT_ON_WINDOWS" "SOURCES;LIBRARIES;ENVIRONMENT" ${ARGN})
  if(WIN32 AND T_NOT_ON_WINDOWS)
    file(APPEND ${CMAKE_BINARY_DIR}/not-on-windows.txt "${name}: ${T_NOT_ON_WINDOWS}\n")
    return()
  endif()
  add_executable(${name} ${T_SOURCES})
  set_target_properties(${name} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests/${name})
  target_link_libraries(${name} PRIVATE project_options test_options Qt5::Test ${T_LIBRARIES})

  set(options)
  if(WIN32)
    list(APPEND options --wine)
    list(APPEND T_ENVIRONMENT "VORLYN_WINDOWS_KIT=${VORLYN_WINDOWS_KIT}")
  endif()
  foreach(need DISPLAY NETWORK SOUND PRINTING)
    if(T_${need})
      string(TOLOWER --${need} option)
      list(APPEND options ${option})
    endif()
  endforeach()
  add_test(NAME ${name}
    COMMAND ${CMAKE_SOURCE_DIR}/tests/support/run-test.sh ${options} -- $<TARGET_FILE:${name}>)
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 120)
  endif()
  set_tests_properties(${name} PROPERTIES
    TIMEOUT ${T_TIMEOUT}
    ENVIRONMENT "${vorlyn_sanitizer_environment};${T_ENVIRONMENT}")
endfunction()
