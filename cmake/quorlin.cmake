# What every target of the project shares: warnings, sanitizers, the include root, and one way to declare a library.

add_library(quorlin_options INTERFACE)
target_compile_options(quorlin_options INTERFACE -Wall -Wextra -Wshadow -Wconversion -Wformat=2 -Wformat-nonliteral
  -Wold-style-cast $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond>)
if(QUORLIN_WERROR)
  target_compile_options(quorlin_options INTERFACE -Werror)
endif()
if(QUORLIN_SANITIZE)
  target_compile_options(quorlin_options INTERFACE -fsanitize=${QUORLIN_SANITIZE} -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  target_link_options(quorlin_options INTERFACE -fsanitize=${QUORLIN_SANITIZE})
endif()
# What hardens the released programs against a fault that hostile input may find, and costs no measurable time. The
# sanitizers have checks of their own, which these would hide.
if(CMAKE_BUILD_TYPE STREQUAL Release AND NOT QUORLIN_SANITIZE)
  if(QUORLIN_STATIC)
    target_link_options(quorlin_options INTERFACE -static-pie)
  else()
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
  endif()
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  target_compile_options(quorlin_options INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong)
  target_link_options(quorlin_options INTERFACE -Wl,-z,relro,-z,now)
endif()
if(QUORLIN_COVERAGE)
  target_compile_options(quorlin_options INTERFACE --coverage)
  target_link_options(quorlin_options INTERFACE --coverage)
endif()

# Compiles every listed header alone: build the target all_verify_interface_header_sets.
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)

# quorlin_library(NAME SOURCES a.cpp ... HEADERS a.h ... LINKS other ...): one static library per folder.
function(quorlin_library name)
  cmake_parse_arguments(LIB "" "" "SOURCES;HEADERS;LINKS" ${ARGN})
  add_library(${name} STATIC ${LIB_SOURCES})
  target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/src FILES ${LIB_HEADERS})
  target_link_libraries(${name} PUBLIC ${LIB_LINKS} PRIVATE quorlin_options)
  # Not for the tests: there g++ 12 warns of its own library.
  target_compile_options(${name} PRIVATE -Wnull-dereference)
  # The header check compiles with the interface's settings: it needs the language level.
  target_compile_features(${name} PUBLIC cxx_std_20)
  if(QUORLIN_SANITIZE OR QUORLIN_COVERAGE)
    target_link_libraries(${name} PUBLIC quorlin_options)
  endif()
endfunction()
