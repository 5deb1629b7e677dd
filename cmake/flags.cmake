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

if(MIMORA_SANITIZE)
  add_compile_options(-fsanitize=${MIMORA_SANITIZE} -fno-omit-frame-pointer
    -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${MIMORA_SANITIZE})
endif()
