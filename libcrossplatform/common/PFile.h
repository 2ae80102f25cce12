#pragma once

// Threads: as each of these headers says.

/// The whole container family: sections, readers and writers over files and memory, section types.
#include <libcrossplatform/common/PFileHeader.h>
#include <libcrossplatform/common/PFileMemReader.h>
#include <libcrossplatform/common/PFileMemWriter.h>
#include <libcrossplatform/common/PFilePayload.h>
#include <libcrossplatform/common/PFileReader.h>
#include <libcrossplatform/common/PFileSafeWriter.h>
#include <libcrossplatform/common/PFileSection.h>
#include <libcrossplatform/common/PFileSectionTypes.h>
#include <libcrossplatform/common/PFileTypes.h>
#include <libcrossplatform/common/PFileWriter.h>
