# Linking with static libraries, so that a program needs nothing but the C library.

find_package(PkgConfig REQUIRED)
add_link_options(-static-libstdc++ -static-libgcc -s)

# The archive of a library; what belongs to the C library is left to it.
function(find_static name result)
  if(name MATCHES "^(c|m|dl|rt|pthread)$")
    set(${result} "" PARENT_SCOPE)
    return()
  endif()
  find_library(STATIC_${name} NAMES lib${name}.a REQUIRED)
  set(${result} ${STATIC_${name}} PARENT_SCOPE)
endfunction()

# The archives of pkg-config's modules and of what those need, each once, in whatever order: they go
# into a group of the linker's.
function(find_static_modules result)
  pkg_check_modules(MODULES_OF_${result} REQUIRED QUIET ${ARGN})
  set(found)
  foreach(name IN LISTS MODULES_OF_${result}_STATIC_LIBRARIES)
    find_static(${name} archive)
    list(APPEND found ${archive})
  endforeach()
  list(REMOVE_DUPLICATES found)
  set(${result} "-Wl,--start-group" ${found} "-Wl,--end-group" PARENT_SCOPE)
endfunction()
