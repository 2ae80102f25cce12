#pragma once

// Threads: any number may call these functions at once.

#include <cstdint>
#include <string>
#include <vector>

#include <libcrossplatform/logging/Export.h>

namespace Veltra {

/// The instrument a result or a setting comes from.
enum ModelId : uint32_t {
  MODEL_ID_ORBEL = 3000,
  MODEL_ID_QUILL = 3001,
  MODEL_ID_ORBEL2 = 3002,
  MODEL_ID_QUILL2 = 3003,
};

/// The names of all models, in the order of their ids.
extern VELTRA_EXPORT const std::vector<std::string> modelNameList;  // NOLINT(readability-identifier-naming)

/// "Orbel", "Quill", "Orbel2", "Quill2"; empty for any other value.
VELTRA_EXPORT const char* toString(ModelId model);
/// Compares exactly. @return false, with `out` unchanged, for an unknown name or null
[[nodiscard]] VELTRA_EXPORT bool modelIdStrToEnum(const char* name, ModelId& out);

///@{
/// Either generation of the Quill.
VELTRA_EXPORT bool isQuill(ModelId model);
VELTRA_EXPORT bool isQuill(const std::string& modelName);
///@}
///@{
/// The second generation of either model.
VELTRA_EXPORT bool isModelV2(ModelId model);
VELTRA_EXPORT bool isModelV2(const std::string& modelName);
///@}

}  // namespace Veltra
