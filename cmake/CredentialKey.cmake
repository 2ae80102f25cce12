# The key of the stored credentials. It goes from a file into a file only its owner can read, never into a message, and
# reaches the one unit that asks for it with veltra_credential_key().

set(VELTRA_CREDENTIAL_KEY_FILE "" CACHE FILEPATH
  "File of 32 hexadecimal digits, the key of the stored credentials; empty: the development key (docs/credentials.md)")
set(VELTRA_CREDENTIAL_KEY "" CACHE STRING "The key itself, which others can see while cmake runs, and later in the cache")
mark_as_advanced(VELTRA_CREDENTIAL_KEY)

function(veltra_credential_key source)
  set(key "${VELTRA_CREDENTIAL_KEY}")
  set(from VELTRA_CREDENTIAL_KEY)
  if(NOT key STREQUAL "")
    message(WARNING
      "VELTRA_CREDENTIAL_KEY puts the key on a command line, where every user of the machine can see it, and into the "
      "cache. VELTRA_CREDENTIAL_KEY_FILE names a file that holds it; see docs/credentials.md.")
  elseif(NOT VELTRA_CREDENTIAL_KEY_FILE STREQUAL "")
    set(from "${VELTRA_CREDENTIAL_KEY_FILE}")
    if(NOT EXISTS "${from}")
      message(FATAL_ERROR "VELTRA_CREDENTIAL_KEY_FILE: there is no file ${from}.")
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${from}")
    file(READ "${from}" key)
    string(STRIP "${key}" key)
  else()
    message(WARNING
      "VELTRA_CREDENTIAL_KEY_FILE is not set: this build stores credentials under the DEVELOPMENT KEY, which anyone with "
      "the sources knows. Name a file with a key of your own before a device is shipped; see docs/credentials.md.")
    set(key "76656c7472612d646576656c6f706d74")
  endif()
  string(LENGTH "${key}" length)
  if(NOT length EQUAL 32 OR NOT key MATCHES "^[0-9A-Fa-f]+$")
    message(FATAL_ERROR
      "${from} must hold exactly 32 hexadecimal digits, the 16 bytes of an AES-128 key. See docs/credentials.md.")
  endif()
  string(REGEX REPLACE "(..)" "0x\\1, " VELTRA_CREDENTIAL_KEY_BYTES "${key}")
  string(REGEX REPLACE ", $" "" VELTRA_CREDENTIAL_KEY_BYTES "${VELTRA_CREDENTIAL_KEY_BYTES}")
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/credential-key)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/CredentialKey.h.in ${folder}/CredentialKey.h @ONLY
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE)
  set_source_files_properties(${source} PROPERTIES INCLUDE_DIRECTORIES ${folder})
endfunction()
