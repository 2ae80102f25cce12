# What every target of the project is built with.

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
  endif()
endfunction()

# Tests, replays and their helpers: the same flags, but not optimised, which costs more than it saves. What they test is
# optimised as ever.
function(veltra_test_flags target)
  veltra_flags(${target})
  if(NOT VELTRA_FUZZ)
    target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Release>>:-O0>)
  endif()
endfunction()
