# Build conventions shared by every target of the project.

# Everything lands in two folders so that $ORIGIN-relative run paths work
# from the build tree exactly as from an installed tree: libraries and
# provider modules side by side in lib/, programs in bin/.
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

set(CMAKE_SKIP_BUILD_RPATH OFF)
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../lib")

add_compile_options(-Wall -Wextra)
# Shared libraries must resolve every symbol at link time, and run paths are
# written as RUNPATH, not the older RPATH.
add_link_options(LINKER:--enable-new-dtags)
set(ZDA_NO_UNDEFINED LINKER:--no-undefined)

if(ZDA_SANITIZE AND ZDA_TSAN)
  message(FATAL_ERROR "ZDA_SANITIZE and ZDA_TSAN cannot be combined")
endif()
if(ZDA_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
  # --no-undefined cannot see the sanitizer runtime in shared libraries.
  set(ZDA_NO_UNDEFINED "")
endif()
if(ZDA_TSAN)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
  set(ZDA_NO_UNDEFINED "")
endif()

# zda_shared_library(<target> [OUTPUT_NAME <name>] [SOVERSION <v>] SOURCES ... )
# A shared library with the project's link rules: no undefined symbols and a
# run path of its own folder.
function(zda_shared_library target)
  cmake_parse_arguments(ARG "" "OUTPUT_NAME;SOVERSION" "SOURCES" ${ARGN})
  add_library(${target} SHARED ${ARG_SOURCES})
  if(ARG_OUTPUT_NAME)
    set_target_properties(${target} PROPERTIES OUTPUT_NAME ${ARG_OUTPUT_NAME})
  endif()
  if(ARG_SOVERSION)
    set_target_properties(${target} PROPERTIES SOVERSION ${ARG_SOVERSION})
  endif()
  if(ZDA_NO_UNDEFINED)
    target_link_options(${target} PRIVATE ${ZDA_NO_UNDEFINED})
  endif()
endfunction()
