#pragma once

#include <libinspect/container/Findings.h>
#include <libinspect/job/JobLinks.h>

namespace Command {

constexpr int EXIT_DONE = 0;
constexpr int EXIT_NO = 1;  ///< the answer is no: damage
constexpr int EXIT_USAGE = 2;
constexpr int EXIT_WITH_LOSS = 3;  ///< done, with loss or warnings
constexpr int EXIT_COULD_NOT = 4;  ///< could not be done

/// With many inputs the worst code counts: 4, 1, 3, 0.
int worse(int a, int b);

/// 0 nothing found; 1 damage; 3 only warnings.
int codeOf(const Inspect::Findings& findings);

/// 0 each expected ID has a result; 1 IDs are missing, damaged or foreign. A cable that was tested again is no error.
int codeOf(const Inspect::Coverage& coverage);

}  // namespace Command
