#include <libcrossplatform/common/LinkAdapters.h>

namespace Veltra {
namespace {

constexpr uint32_t LINK = LINK_ADAPTER_PERMANENT_LINK;
constexpr uint32_t CHANNEL = LINK_ADAPTER_CHANNEL;
constexpr uint32_t CORD = LINK_ADAPTER_PATCH_CORD;
constexpr uint32_t MPTL = LINK_ADAPTER_MPTL;
constexpr uint32_t COAX = LINK_ADAPTER_COAX;
constexpr uint32_t REFERENCE = LINK_ADAPTER_REFERENCE;
constexpr uint32_t WITHDRAWN = LINK_ADAPTER_WITHDRAWN;

// In the order of search, not of the ids.
constexpr LinkAdapter ADAPTERS[] = {
    // id, key, part number, display name, rating in MHz, flags
    {400, "pla2g", "VLA-400", "Cat 8 Permanent Link", 2500, LINK},
    {401, "cha2g", "VLA-401", "Cat 8 Channel", 2500, CHANNEL},
    {404, "plaGG452g", "VLA-404", "GG45 Class II Permanent Link", 2500, LINK},
    {405, "chaGG452g", "VLA-405", "GG45 Class II Channel", 2500, CHANNEL},
    {406, "plaTERA2g", "VLA-406", "TERA Class II Permanent Link", 2500, LINK},
    // The same key as 406, although it is a channel: instruments in the field know it by that key.
    {407, "plaTERA2g", "VLA-407", "TERA Class II Channel", 2500, CHANNEL},
    {408, "setref2g", "VLA-408", "Set Reference 2 GHz", 2500, REFERENCE},
    {414, "coax2g", "VLA-414", "Coax 2 GHz", 2500, COAX},
    {409, "labsma2g", "VLA-409", "Lab SMA 2 GHz", 2500, REFERENCE},
    {415, "labmain2g", "VLA-415", "Lab Main 2 GHz", 2500, REFERENCE},
    {416, "labrem2g", "VLA-416", "Lab Remote 2 GHz", 2500, REFERENCE},
    {417, "shorty2g", "VLA-417", "Short Link 2 GHz", 2500, REFERENCE},
    {410, "chaSPE-LC", "VLA-410", "SPE Channel, LC Style", 2500, CHANNEL},
    {411, "chaSPE-IP20", "VLA-411", "SPE Channel, IP20 Style", 2500, CHANNEL},
    {200, "pla", "VLA-200", "Cat 6A / Class Ea Permanent Link", 500, LINK},
    {201, "obsolete", nullptr, "", 500, WITHDRAWN},
    {203, "legacy", "VLA-203", "Legacy Permanent Link", 250, LINK | WITHDRAWN},
    {202, "cha", "VLA-202", "Cat 6A / Class Ea Channel", 500, CHANNEL},
    {224, "chaIX", "VLA-224", "ix Industrial Channel", 500, CHANNEL},
    {204, "plaGG45", "VLA-204", "GG45 Class Fa Permanent Link", 1200, LINK},
    {205, "chaGG45", "VLA-205", "GG45 Class Fa Channel", 1200, CHANNEL},
    {223, "chaGG45A", "VLA-223", "GG45 Class Ea Channel", 500, CHANNEL},
    {206, "plaTERA", "VLA-206", "TERA Class Fa Permanent Link", 1200, LINK},
    {207, "chaTERA", "VLA-207", "TERA Class Fa Channel", 1200, CHANNEL},
    {208, "setref", "VLA-208", "Set Reference", 1200, REFERENCE},
    {209, "labsma", "VLA-209", "Lab SMA", 1200, REFERENCE},
    {210, "lab", "VLA-210", "Lab", 1200, REFERENCE},
    {211, "ec7", "VLA-211", "EC7 Class Fa Channel", 1200, CHANNEL},
    {212, "m12w4", "VLA-212", "M12 4-Wire Channel", 100, CHANNEL},
    {213, "m12w8", "VLA-213", "M12 8-Wire Channel", 500, CHANNEL},
    {214, "coax", "VLA-214", "Coax", 1200, COAX},
    {215, "labmain", "VLA-215", "Lab Main", 1200, REFERENCE},
    {221, "lab2main", "VLA-221", "Lab Main 2", 1200, REFERENCE},
    {216, "labrem", "VLA-216", "Lab Remote", 1200, REFERENCE},
    {222, "lab2rem", "VLA-222", "Lab Remote 2", 1200, REFERENCE},
    {217, "shorty", "VLA-217", "Short Link", 1200, REFERENCE},
    {218, "pc5e", "VLA-218", "Cat 5e Patch Cord", 100, CORD},
    {219, "pc6", "VLA-219", "Cat 6 Patch Cord", 250, CORD},
    {220, "pc6a", "VLA-220", "Cat 6A Patch Cord", 500, CORD},
    {225, "mptl5e", "VLA-225", "Cat 5e MPTL", 100, MPTL},
    {226, "mptl6", "VLA-226", "Cat 6 MPTL", 250, MPTL},
    {227, "mptl6a", "VLA-227", "Cat 6A MPTL", 500, MPTL},
    {301, "nxgain2g", "VLA-301", "NEXT Gain", 2500, REFERENCE},
    {302, "cmload2g", "VLA-302", "Common Mode Load", 2500, REFERENCE},
    {303, "cmshort2g", "VLA-303", "Common Mode Short", 2500, REFERENCE},
    {304, "open2g", "VLA-304", "Open", 2500, REFERENCE},
    {305, "cmdm2g", "VLA-305", "Common Mode to Differential Mode", 2500, REFERENCE},
    {306, "tclun2g", "VLA-306", "TCL Unbalance", 2500, REFERENCE},
    {307, "resist2g", "VLA-307", "Resistance", 2500, REFERENCE},
    {308, "seload2g", "VLA-308", "Single-Ended Load", 2500, REFERENCE},
    {101, "nxgain", "VLA-101", "NEXT Gain", 1200, REFERENCE},
    {102, "cmload", "VLA-102", "Common Mode Load", 1200, REFERENCE},
    {103, "cmshort", "VLA-103", "Common Mode Short", 1200, REFERENCE},
    {104, "open", "VLA-104", "Open", 1200, REFERENCE},
    {105, "cmdm", "VLA-105", "Common Mode to Differential Mode", 1200, REFERENCE},
    {106, "tclun", "VLA-106", "TCL Unbalance", 1200, REFERENCE},
    {107, "resist", "VLA-107", "Resistance", 1200, REFERENCE},
    {109, "load", "VLA-109", "Load", 1200, REFERENCE},
    {110, "short", "VLA-110", "Short", 1200, REFERENCE},
    {311, "rlverif2g", "VLA-311", "Return Loss Verification", 2500, REFERENCE},
    {312, "nextverif2g", "VLA-312", "NEXT Verification", 2500, REFERENCE},
    {313, "ilverifmain2g", "VLA-313", "Insertion Loss Verification Main", 2500, REFERENCE},
    {320, "ilverifrem2g", "VLA-320", "Insertion Loss Verification Remote", 2500, REFERENCE},
    {314, "cdnextverif2g", "VLA-314", "CDNEXT Verification", 2500, REFERENCE},
    {315, "tclverif2g", "VLA-315", "TCL Verification", 2500, REFERENCE},
    {316, "loopres2g", "VLA-316", "Loop Resistance", 2500, REFERENCE},
    {317, "resunbal2g", "VLA-317", "Resistance Unbalance", 2500, REFERENCE},
    {318, "slrlmain2g", "VLA-318", "SLRL Main", 2500, REFERENCE},
    {319, "slrlrem2g", "VLA-319", "SLRL Remote", 2500, REFERENCE},
    {321, "outputbalA2g", "VLA-321", "Output Balance A", 2500, REFERENCE},
    {322, "outputbalB2g", "VLA-322", "Output Balance B", 2500, REFERENCE},
    {111, "rlverif", "VLA-111", "Return Loss Verification", 1200, REFERENCE},
    {112, "nextverif", "VLA-112", "NEXT Verification", 1200, REFERENCE},
    {113, "ilverifmain", "VLA-113", "Insertion Loss Verification Main", 1200, REFERENCE},
    {120, "ilverifrem", "VLA-120", "Insertion Loss Verification Remote", 1200, REFERENCE},
    {114, "cdnextverif", "VLA-114", "CDNEXT Verification", 1200, REFERENCE},
    {115, "tclverif", "VLA-115", "TCL Verification", 1200, REFERENCE},
    {116, "loopres", "VLA-116", "Loop Resistance", 1200, REFERENCE},
    {117, "resunbal", "VLA-117", "Resistance Unbalance", 1200, REFERENCE},
    {118, "slrlmain", "VLA-118", "SLRL Main", 1200, REFERENCE},
    {119, "slrlrem", "VLA-119", "SLRL Remote", 1200, REFERENCE},
    {1, "unknown", nullptr, "", 500, 0},
};

}  // namespace

gsl::span<const LinkAdapter> linkAdapters() {
  return ADAPTERS;
}

const LinkAdapter* findLinkAdapter(int id) {
  for (const LinkAdapter& adapter : ADAPTERS) {
    if (adapter.id == id) return &adapter;
  }
  return nullptr;
}

const LinkAdapter* findLinkAdapterByPartNumber(std::string_view partNumber) {
  for (const LinkAdapter& adapter : ADAPTERS) {
    // An adapter without a part number is never found: records without an adapter have an empty one.
    if (adapter.partNumber != nullptr && adapter.partNumber == partNumber) return &adapter;
  }
  return nullptr;
}

}  // namespace Veltra
