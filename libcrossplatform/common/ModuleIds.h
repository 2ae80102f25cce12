#pragma once

// Threads: any number may call these functions at once.

#include <cstdint>

#include <libcrossplatform/logging/Export.h>

namespace Veltra {

/// The test module plugged into an instrument. The hundreds give the family: 1 OTDR, 2 loss test set, 3 and 4 copper,
/// 5 fibre inspection. An id of 10000 and more is the module 10000 below it in its firmware-update or boot state.
enum ModuleId : int32_t {
  MODULE_ID_NONE = 0,
  MODULE_ID_KTR_QUAD = 100,
  MODULE_ID_KTR_MM = 101,
  MODULE_ID_KTR_SM = 102,
  MODULE_ID_KTR_HDR = 103,
  MODULE_ID_KTR_HDR_1490 = 104,
  MODULE_ID_KTR_HDR_1625 = 105,
  MODULE_ID_KTR_HDR_QUAD = 106,
  MODULE_ID_LTM_QUAD = 200,
  MODULE_ID_LTM_MM = 201,
  MODULE_ID_LTM_SM = 202,
  MODULE_ID_QRT_A50 = 300,
  MODULE_ID_QRT_A06 = 302,
  MODULE_ID_QRT_A80 = 400,
  MODULE_ID_PRB_10 = 500,
  MODULE_ID_PRB_30 = 501,
};

/// Difference between a module's id and its id in firmware-update or boot state.
constexpr int32_t DFU_MODULE_ID_OFFSET = 10000;

/// The category of a module.
enum ModuleCategory : int32_t {
  MODULE_CATEGORY_NONE = 0,  ///< as a filter: every plain module
  MODULE_CATEGORY_OTDR = 1,
  MODULE_CATEGORY_OLTS = 2,
  MODULE_CATEGORY_COPPER = 3,
  MODULE_CATEGORY_FIBER_DFU = 4,   ///< as a filter only: fibre modules in update state
  MODULE_CATEGORY_PROBE_VIEW = 5,  ///< fibre-inspection probes
  MODULE_CATEGORY_OTHER = 6,       ///< as a filter: every module in update or boot state
};

/// Whether a module in update or boot state counts as the module it is.
enum IsDfuModuleValid : bool {
  DFU_MODULE_IS_OTHER = false,
  DFU_MODULE_IS_VALID = true,
};

/// The name on the module, or what it reports in its update state; empty for an unknown id.
VELTRA_EXPORT const char* toString(ModuleId module);
/// "OTDR", "OLTS", "Copper", "Fiber DFU", "Probe View", "Other"; empty for none and for any other value.
VELTRA_EXPORT const char* toString(ModuleCategory category);

/// The module itself where the id stands for it in update state.
VELTRA_EXPORT ModuleId moduleIdSansDfu(ModuleId module);
/// True for the ids that have a name.
VELTRA_EXPORT bool isValidModule(ModuleId module);
/// True for the three copper modules; not for one in update or boot state.
VELTRA_EXPORT bool isCopperModule(ModuleId module);

///@{
/// The category of an id, by its range: ids without a name have one too. Never MODULE_CATEGORY_FIBER_DFU.
VELTRA_EXPORT ModuleCategory getModuleCategory(ModuleId module, IsDfuModuleValid dfuValid);
inline ModuleCategory getModuleCategory(ModuleId module, bool dfuValid) {
  return getModuleCategory(module, static_cast<IsDfuModuleValid>(dfuValid));
}
///@}
/// True for a valid module that the category, taken as a filter, lets through.
VELTRA_EXPORT bool isValidModulePerCategory(ModuleId module, ModuleCategory category);

}  // namespace Veltra
