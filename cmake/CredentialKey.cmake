# The key of the stored credentials. It goes into a file only its owner can read, never onto a command line or into a
# message, and reaches the one unit that asks for it with veltra_credential_key().

set(VELTRA_CREDENTIAL_KEY "" CACHE STRING
  "AES-128 key of the stored credentials, 32 hexadecimal digits; empty: the development key (docs/credentials.md)")

function(veltra_credential_key source)
  set(key "${VELTRA_CREDENTIAL_KEY}")
  string(LENGTH "${key}" length)
  if(length EQUAL 0)
    message(WARNING
      "VELTRA_CREDENTIAL_KEY is not set: this build stores credentials under the DEVELOPMENT KEY, which anyone with the "
      "sources knows. Set it to 32 hexadecimal digits of your own before a device is shipped; see docs/credentials.md.")
    set(key "76656c7472612d646576656c6f706d74")
  elseif(NOT length EQUAL 32 OR NOT key MATCHES "^[0-9A-Fa-f]+$")
    message(FATAL_ERROR
      "VELTRA_CREDENTIAL_KEY must be exactly 32 hexadecimal digits, the 16 bytes of an AES-128 key; leave it empty for "
      "the development key. See docs/credentials.md.")
  endif()
  string(REGEX REPLACE "(..)" "0x\\1, " VELTRA_CREDENTIAL_KEY_BYTES "${key}")
  string(REGEX REPLACE ", $" "" VELTRA_CREDENTIAL_KEY_BYTES "${VELTRA_CREDENTIAL_KEY_BYTES}")
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/credential-key)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/CredentialKey.h.in ${folder}/CredentialKey.h @ONLY
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE)
  set_source_files_properties(${source} PROPERTIES INCLUDE_DIRECTORIES ${folder})
endfunction()
