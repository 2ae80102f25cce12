#include <libcrossplatform/common/ModelIds.h>

#include <libcrossplatform/common/EnumText.h>

namespace Veltra {
namespace {

constexpr EnumText<ModelId> MODEL_TEXTS[] = {
    {MODEL_ID_ORBEL, "Orbel"},
    {MODEL_ID_QUILL, "Quill"},
    {MODEL_ID_ORBEL2, "Orbel2"},
    {MODEL_ID_QUILL2, "Quill2"},
};
static_assert(isOneToOne(MODEL_TEXTS));

std::vector<std::string> modelNames() {
  std::vector<std::string> names;
  for (const EnumText<ModelId>& row : MODEL_TEXTS) names.emplace_back(row.text);
  return names;
}

/// The model of a name; 0, which is not a model, for any other text.
ModelId modelOf(const std::string& name) {
  ModelId model{};
  valueOf(MODEL_TEXTS, name, model);
  return model;
}

}  // namespace

const std::vector<std::string> modelNameList = modelNames();  // NOLINT(readability-identifier-naming,cert-err58-cpp)

const char* toString(ModelId model) {
  return textOf(MODEL_TEXTS, model);
}

bool modelIdStrToEnum(const char* name, ModelId& out) {
  return name != nullptr && valueOf(MODEL_TEXTS, name, out);
}

bool isQuill(ModelId model) {
  return model == MODEL_ID_QUILL || model == MODEL_ID_QUILL2;
}

bool isQuill(const std::string& modelName) {
  return isQuill(modelOf(modelName));
}

bool isModelV2(ModelId model) {
  return model == MODEL_ID_ORBEL2 || model == MODEL_ID_QUILL2;
}

bool isModelV2(const std::string& modelName) {
  return isModelV2(modelOf(modelName));
}

}  // namespace Veltra
