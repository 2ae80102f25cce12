# What every target of the project is built with.
include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)
include(CheckPIESupported)
check_pie_supported()

# What makes a fault in the code harder to use: each where compiler and target have it.
set(VELTRA_HARDENING "")
foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
  string(MAKE_C_IDENTIFIER "VELTRA_HAS${flag}" has)
  set(CMAKE_REQUIRED_FLAGS -Werror)
  check_cxx_compiler_flag(${flag} ${has})
  unset(CMAKE_REQUIRED_FLAGS)
  if(${has})
    list(APPEND VELTRA_HARDENING ${flag})
  endif()
endforeach()
check_linker_flag(CXX "-Wl,-z,relro,-z,now" VELTRA_HAS_RELRO)

# One set of flags for library, tools, tests and benchmarks.
function(veltra_flags target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    # A fused multiply-add happens only where the code asks for one: results must not depend on the machine.
    -ffp-contract=off)
  if(VELTRA_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  # Files over 2 GiB and sections of up to 4 GiB are addressed on 32-bit targets too.
  target_compile_definitions(${target} PRIVATE _FILE_OFFSET_BITS=64)
  if(VELTRA_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${VELTRA_SANITIZE} -fno-sanitize-recover=all
      -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${VELTRA_SANITIZE})
    # clang gives a program in C only half of what the library in C++ was compiled to call.
    if(CMAKE_C_COMPILER_ID STREQUAL "Clang" AND VELTRA_SANITIZE MATCHES "undefined")
      target_link_options(${target} PRIVATE $<$<LINK_LANGUAGE:C>:-fsanitize-link-c++-runtime>)
      target_link_libraries(${target} PRIVATE $<$<LINK_LANGUAGE:C>:stdc++>)
    endif()
  endif()
endfunction()

# veltra_precompile(TARGET HEADER...): what most sources of the target include is compiled once. The preset release goes
# without, so that each source has to include what it needs; so does a compiler cache, which does better.
function(veltra_precompile target)
  if(NOT CMAKE_CXX_COMPILER_LAUNCHER MATCHES ccache)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()

# veltra_unity(TARGET NAME...): with VELTRA_UNITY, the target's sources are compiled several at a time. Each NAME is one
# that several of them have for something of their own: it stays so. The presets release and device and the stage tidy
# compile each source alone, so that each has to include what it needs.
function(veltra_unity target)
  set(own "#define VELTRA_OF_SOURCE_(name, id) name##id\n"
    "#define VELTRA_OF_SOURCE(name, id) VELTRA_OF_SOURCE_(name, id)\n")
  foreach(name ${ARGN})
    list(APPEND own "#define ${name} VELTRA_OF_SOURCE(${name}_, VELTRA_SOURCE_ID)\n")
  endforeach()
  list(JOIN own "" own)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${VELTRA_UNITY} UNITY_BUILD_BATCH_SIZE 8
    UNITY_BUILD_UNIQUE_ID VELTRA_SOURCE_ID UNITY_BUILD_CODE_BEFORE_INCLUDE "${own}")
  # A class of an anonymous namespace is a fault in a header. g++ takes included sources for headers.
  if(VELTRA_UNITY AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-Wno-subobject-linkage>)
  endif()
endfunction()

# Tests, replays and their helpers: the same flags, but not optimised, which costs more than it saves. What they test is
# optimised as usual.
function(veltra_test_flags target)
  veltra_flags(${target})
  if(NOT VELTRA_FUZZ)
    target_compile_options(${target} PRIVATE -O0)
  endif()
  # Unoptimised, g++ takes the odd address of a Thumb function for a misaligned reference.
  if(VELTRA_SANITIZE AND CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
    target_compile_options(${target} PRIVATE -fno-sanitize=alignment)
  endif()
endfunction()

# For what is shipped, in the configurations it is shipped in. Not with sanitizers, which look at the same calls in their
# own way, and not unoptimised, where checked calls cannot be had.
function(veltra_harden target)
  if(VELTRA_SANITIZE)
    return()
  endif()
  set(shipped $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
  # The compiler may define a level of its own.
  target_compile_options(${target} PRIVATE
    "$<${shipped}:${VELTRA_HARDENING};-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  if(VELTRA_HAS_RELRO)
    target_link_options(${target} PRIVATE "$<${shipped}:-Wl,-z,relro,-z,now>")
  endif()
endfunction()
