# One interface target carries the flags of all our code; plain_flags is its part that knows nothing of Qt.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
include(CheckCXXCompilerFlag)

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

add_library(plain_flags INTERFACE)
if(MSVC)
  target_compile_options(plain_flags INTERFACE /W4 /utf-8 /permissive-
    $<$<BOOL:${PLANILHA_WARNINGS_ARE_ERRORS}>:/WX>)
else()
  target_compile_options(plain_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wconversion
    $<$<BOOL:${PLANILHA_WARNINGS_ARE_ERRORS}>:-Werror>)
endif()
# Doubles are rounded at each step, as everywhere else: the older unit of 32-bit processors keeps more digits between them, and
# a sum would end otherwise there.
if(MINGW AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86")
  target_compile_options(plain_flags INTERFACE -msse2 -mfpmath=sse)
endif()
# Foreign files are read here: an overrun ends the program instead of going on with what it wrote. tests/hardening reads
# the finished binaries for it.
if(UNIX AND NOT APPLE)
  target_compile_options(plain_flags INTERFACE -fstack-protector-strong)
  foreach(flag -fstack-clash-protection -fcf-protection=full -mbranch-protection=standard)
    string(MAKE_C_IDENTIFIER "takes${flag}" takes)
    check_cxx_compiler_flag(${flag} ${takes})
    if(${takes})
      target_compile_options(plain_flags INTERFACE ${flag})
    endif()
  endforeach()
  target_compile_definitions(plain_flags INTERFACE _GLIBCXX_ASSERTIONS)
  target_link_options(plain_flags INTERFACE LINKER:-z,relro,-z,now)
  if(NOT PLANILHA_SANITIZE) # They look over the same calls themselves. Without optimisation it would only warn.
    target_compile_options(plain_flags INTERFACE
      $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=3>)
  endif()
endif()
if(PLANILHA_SANITIZE)
  target_compile_options(plain_flags INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  target_link_options(plain_flags INTERFACE -fsanitize=address,undefined)
endif()

add_library(qt_flags INTERFACE)
target_link_libraries(qt_flags INTERFACE plain_flags)
target_compile_definitions(qt_flags INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_NO_URL_CAST_FROM_STRING
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_NO_FOREACH QT_STRICT_ITERATORS
  QT_DISABLE_DEPRECATED_BEFORE=0x060400)

if(PLANILHA_TIDY)
  find_program(CLANG_TIDY NAMES clang-tidy clang-tidy-14 REQUIRED)
  set(CMAKE_CXX_CLANG_TIDY ${CLANG_TIDY} --quiet)
endif()
