#include <libcrossplatform/common/ModuleIds.h>

#include <libcrossplatform/common/EnumText.h>

namespace Veltra {
namespace {

constexpr ModuleId inUpdateState(ModuleId module) {
  return static_cast<ModuleId>(module + DFU_MODULE_ID_OFFSET);
}

constexpr EnumText<ModuleId> MODULE_TEXTS[] = {
    {MODULE_ID_KTR_QUAD, "KTR-QUAD"},
    {MODULE_ID_KTR_MM, "KTR-MM"},
    {MODULE_ID_KTR_SM, "KTR-SM"},
    {MODULE_ID_KTR_HDR, "KTR-HDR"},
    {MODULE_ID_KTR_HDR_1490, "KTR-HDR+1490"},
    {MODULE_ID_KTR_HDR_1625, "KTR-HDR+1625"},
    {MODULE_ID_KTR_HDR_QUAD, "KTR-HDR-QUAD"},
    {MODULE_ID_LTM_QUAD, "LTM-QUAD"},
    {MODULE_ID_LTM_MM, "LTM-MM"},
    {MODULE_ID_LTM_SM, "LTM-SM"},
    {MODULE_ID_QRT_A50, "QRT-A50"},
    {MODULE_ID_QRT_A06, "QRT-A06"},
    {MODULE_ID_QRT_A80, "QRT-A80"},
    {MODULE_ID_PRB_10, "PRB-10"},
    {MODULE_ID_PRB_30, "PRB-30"},
    {inUpdateState(MODULE_ID_KTR_QUAD), "DFU: OTDR mid quad"},
    {inUpdateState(MODULE_ID_KTR_MM), "DFU: OTDR mid mm"},
    {inUpdateState(MODULE_ID_KTR_SM), "DFU: OTDR mid sm"},
    {inUpdateState(MODULE_ID_KTR_HDR), "DFU: HDR OTDR sm"},
    {inUpdateState(MODULE_ID_KTR_HDR_1490), "DFU: HDR OTDR sm+1490"},
    {inUpdateState(MODULE_ID_KTR_HDR_1625), "DFU: HDR OTDR sm+1625"},
    {inUpdateState(MODULE_ID_KTR_HDR_QUAD), "DFU: HDR OTDR quad"},
    {inUpdateState(MODULE_ID_LTM_QUAD), "DFU: OLTS mid quad"},
    {inUpdateState(MODULE_ID_LTM_MM), "DFU: OLTS mid mm"},
    {inUpdateState(MODULE_ID_LTM_SM), "DFU: OLTS mid sm"},
    {inUpdateState(MODULE_ID_QRT_A50), "Boot: Copper Class FA"},
    {inUpdateState(MODULE_ID_QRT_A06), "Boot: Copper Cat 6A"},
    {inUpdateState(MODULE_ID_QRT_A80), "Boot: Copper Cat 8"},
};
static_assert(isOneToOne(MODULE_TEXTS));

constexpr EnumText<ModuleCategory> CATEGORY_TEXTS[] = {
    {MODULE_CATEGORY_OTDR, "OTDR"},
    {MODULE_CATEGORY_OLTS, "OLTS"},
    {MODULE_CATEGORY_COPPER, "Copper"},
    {MODULE_CATEGORY_FIBER_DFU, "Fiber DFU"},
    {MODULE_CATEGORY_PROBE_VIEW, "Probe View"},
    {MODULE_CATEGORY_OTHER, "Other"},
};
static_assert(isOneToOne(CATEGORY_TEXTS));

bool isInUpdateState(ModuleId module) {
  return module >= DFU_MODULE_ID_OFFSET;
}

/// By range only: 999 is a probe and 301 is other, although neither is a module. Copper modules in boot state are
/// other, fibre modules in update state a category of their own.
ModuleCategory rawCategory(ModuleId module) {
  constexpr int32_t FIRST_COPPER_BOOT = DFU_MODULE_ID_OFFSET + 300;
  if (isInUpdateState(module)) return module < FIRST_COPPER_BOOT ? MODULE_CATEGORY_FIBER_DFU : MODULE_CATEGORY_OTHER;
  if (module >= 500) return MODULE_CATEGORY_PROBE_VIEW;
  if (module >= 300) return isCopperModule(module) ? MODULE_CATEGORY_COPPER : MODULE_CATEGORY_OTHER;
  if (module >= 200) return MODULE_CATEGORY_OLTS;
  if (module >= 100) return MODULE_CATEGORY_OTDR;
  return module == MODULE_ID_NONE ? MODULE_CATEGORY_NONE : MODULE_CATEGORY_OTHER;
}

}  // namespace

const char* toString(ModuleId module) {
  return textOf(MODULE_TEXTS, module);
}

const char* toString(ModuleCategory category) {
  return textOf(CATEGORY_TEXTS, category);
}

ModuleId moduleIdSansDfu(ModuleId module) {
  return isInUpdateState(module) ? static_cast<ModuleId>(module - DFU_MODULE_ID_OFFSET) : module;
}

bool isValidModule(ModuleId module) {
  return *toString(module) != '\0';
}

bool isCopperModule(ModuleId module) {
  return module == MODULE_ID_QRT_A50 || module == MODULE_ID_QRT_A06 || module == MODULE_ID_QRT_A80;
}

ModuleCategory getModuleCategory(ModuleId module, IsDfuModuleValid dfuValid) {
  const ModuleCategory category = rawCategory(dfuValid ? moduleIdSansDfu(module) : module);
  // "Fiber DFU" is a filter, never a result: for callers such a module is other.
  return category == MODULE_CATEGORY_FIBER_DFU ? MODULE_CATEGORY_OTHER : category;
}

bool isValidModulePerCategory(ModuleId module, ModuleCategory category) {
  if (!isValidModule(module)) return false;
  if (category == MODULE_CATEGORY_NONE) return !isInUpdateState(module);
  // Every module in update state passes as other here, fibre ones too, which also pass as "Fiber DFU".
  if (category == MODULE_CATEGORY_OTHER) return isInUpdateState(module);
  return rawCategory(module) == category;
}

}  // namespace Veltra
