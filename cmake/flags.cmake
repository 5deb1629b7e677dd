# Language and warnings of everything that is built here.

set(CMAKE_C_STANDARD 11)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

option(MIMORA_WERROR "Treat warnings as errors" OFF)
set(MIMORA_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address,undefined")

add_library(mimora_flags INTERFACE)
target_compile_options(mimora_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<BOOL:${MIMORA_WERROR}>:-Werror>
  $<$<COMPILE_LANGUAGE:C>:-fexceptions>)

option(MIMORA_HARDEN "Build with guards against memory errors, where no sanitizer looks for them" ON)
if(MIMORA_HARDEN AND NOT MIMORA_SANITIZE)
  include(CheckCXXCompilerFlag)
  include(CheckPIESupported)
  check_pie_supported()
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  foreach(guard -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER "MIMORA_HAS${guard}" found)
    check_cxx_compiler_flag(${guard} ${found})
    if(${found})
      add_compile_options(${guard})
    endif()
  endforeach()
  # It needs an optimised build. Distributions set a lower level.
  add_compile_options($<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
    $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=3>)
  add_link_options(LINKER:-z,relro,-z,now)
endif()

if(MIMORA_SANITIZE)
  add_compile_options(-fsanitize=${MIMORA_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${MIMORA_SANITIZE})
endif()
