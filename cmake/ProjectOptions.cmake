# What every target of the project is compiled with. Targets link it privately.
add_library(project_options INTERFACE)
target_compile_features(project_options INTERFACE cxx_std_17)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON) # the distribution's Qt asks for it

cmake_path(GET CMAKE_CURRENT_LIST_DIR PARENT_PATH tree)
target_compile_options(project_options INTERFACE
  $<$<CXX_COMPILER_ID:GNU,Clang>:-Wall -Wextra>
  # What is given away names its sources as the tree does, not by this machine's folders.
  $<$<AND:$<CONFIG:Release>,$<COMPILE_LANGUAGE:CXX>>:-ffile-prefix-map=${tree}/=>)
# Calls that 5.12 already calls old are errors; calls newer than 5.12 are kept out
# by scripts/check-sources.sh, as Qt has no switch for them.
target_compile_definitions(project_options INTERFACE
  QT_DEPRECATED_WARNINGS
  QT_DEPRECATED_WARNINGS_SINCE=0x050C00 # what only later versions call old stays in use
  QT_DISABLE_DEPRECATED_BEFORE=0x050C00
  QT_MESSAGELOGCONTEXT) # the log names file and line in release builds too

option(VORLYN_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
if(VORLYN_SANITIZE)
  target_compile_options(project_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(project_options INTERFACE -fsanitize=address,undefined)
endif()

if(NOT CMAKE_CXX_COMPILER_LAUNCHER)
  find_program(CCACHE_PROGRAM ccache)
  if(CCACHE_PROGRAM)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
  endif()
endif()
