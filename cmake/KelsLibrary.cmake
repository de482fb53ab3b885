# kels_arch_flags(ARCH OUT): the compiler flags of an instruction set.
# On i386 float arithmetic goes through SSE2, so that both ABIs round alike, and the stack is realigned on entry: that
# ABI promises an alignment to 4 bytes only, and vectors need 16.
function(kels_arch_flags arch out)
  if(arch STREQUAL "i386")
    set(pointer_size 4)
    set(flags -m32 -march=i686 -msse2 -mfpmath=sse -mstackrealign)
  elseif(arch MATCHES "^x86-64(-v[34])?$")
    set(pointer_size 8)
    set(flags -m64 -march=${arch})
    if(arch STREQUAL "x86-64-v4")
      # The warnings: the compiler's own AVX-512 headers set them off.
      list(APPEND flags -mprefer-vector-width=512 -Wno-maybe-uninitialized -Wno-uninitialized)
    endif()
  else()
    message(FATAL_ERROR "KELS_ARCH must be i386, x86-64, x86-64-v3 or x86-64-v4, not '${arch}'")
  endif()
  if(NOT CMAKE_SIZEOF_VOID_P EQUAL pointer_size)
    message(FATAL_ERROR "KELS_ARCH is ${arch}, but the compiler was tried in the other ABI: start from an empty build "
                        "folder, and where CMAKE_C_FLAGS and CMAKE_CXX_FLAGS are given, begin both with -m32 or -m64")
  endif()
  set(${out} "${flags}" PARENT_SCOPE)
endfunction()

# kels_precompile(TARGET HEADER...): where KELS_PCH is on.  -fpch-preprocess lets ccache see into the result.
function(kels_precompile target)
  if(KELS_PCH)
    target_precompile_headers(${target} PRIVATE ${ARGN})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      target_compile_options(${target} PRIVATE -fpch-preprocess)
    endif()
  endif()
endfunction()

# kels_add_library(TARGET ARCH SUBFOLDER): libkelsra6.so for ARCH as target TARGET, written to SUBFOLDER of the build
# folder.
# -ffp-contract=off: the order and rounding of operations is part of many contracts; fused operations are written out.
# -fno-math-errno: the library reports by status, never by errno, and the square root stays one instruction.
# No exceptions, no RTTI, C linkage of the link step and --as-needed, for CMake names the C++ library to it all the
# same: the result needs libc and libm alone.
function(kels_add_library target arch subfolder)
  kels_arch_flags(${arch} arch_flags)
  add_library(${target}_objects OBJECT ${kels_sources})
  target_include_directories(${target}_objects PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/src)
  set_target_properties(${target}_objects PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
                                                     VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(
    ${target}_objects
    PRIVATE ${arch_flags} -ffp-contract=off -fno-math-errno -fno-exceptions -fno-rtti -ffunction-sections
            -Wall -Wextra -Wconversion -Wshadow)
  # Hardly optimised and nothing inlined, so that branches are those of the source, once in each instance of a template.
  if(KELS_COVERAGE)
    target_compile_options(${target}_objects PRIVATE --coverage -Og -g1 -fno-inline -Dalways_inline=noinline)
  endif()
  # A project that includes this one without a build type would get kernels that are not optimised at all.
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES AND NOT CMAKE_CXX_FLAGS MATCHES "-O")
    message(STATUS "${target}: no build type is set, so the library is compiled with -O2")
    target_compile_options(${target}_objects PRIVATE -O2)
  endif()
  kels_precompile(${target}_objects <core/simd/vec.h>)

  set(script ${PROJECT_SOURCE_DIR}/cmake/kelsra6.map)
  add_library(${target} SHARED $<TARGET_OBJECTS:${target}_objects>)
  set_target_properties(
    ${target}
    PROPERTIES OUTPUT_NAME kelsra6
               VERSION ${PROJECT_VERSION}
               SOVERSION ${PROJECT_VERSION_MAJOR}
               LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${subfolder}
               LINKER_LANGUAGE C
               LINK_DEPENDS ${script})
  target_link_options(${target} PRIVATE ${arch_flags} -Wl,--version-script=${script} -Wl,-Bsymbolic-functions
                      -Wl,--gc-sections -Wl,--as-needed -Wl,-z,relro -Wl,-z,now)
  if(NOT KELS_SANITIZE)
    target_link_options(${target} PRIVATE -Wl,-z,defs)
  endif()
  target_link_libraries(${target} PRIVATE m)
  target_include_directories(
    ${target} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endfunction()
