#pragma once

#include <libcrossplatform/common/PFileTypes.h>

/// Passes one message to a log callback: "%s::%s() - <text> | %s:%d" with class name, method name, the text's values,
/// path of the unit and line. An empty text is the trace of an entry. The unit defines CLASS_NAME and SOURCE. A null
/// callback drops the message. Macros, because format, method name and line depend on the place of use.
#define PFILE_LOG_VALUES(callback, text, ...) PFILE_LOG_VALUES_AS(callback, __func__, text, __VA_ARGS__)

#define PFILE_LOG(callback, text) PFILE_LOG_AS(callback, __func__, text)

/// The same under the name of the public method that a private one works for.
#define PFILE_LOG_VALUES_AS(callback, method, text, ...)                                            \
  do {                                                                                              \
    if ((callback) != nullptr) {                                                                    \
      (callback)("%s::%s() - " text " | %s:%d", CLASS_NAME, method, __VA_ARGS__, SOURCE, __LINE__); \
    }                                                                                               \
  } while (false)

#define PFILE_LOG_AS(callback, method, text)                                                                    \
  do {                                                                                                          \
    if ((callback) != nullptr) (callback)("%s::%s() - " text " | %s:%d", CLASS_NAME, method, SOURCE, __LINE__); \
  } while (false)
