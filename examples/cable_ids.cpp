// A technician labels the cables of a job over two days. What is kept overnight is the first ID, the last ID and the
// IDs that are taken; the sequence is rebuilt from them and goes on where it stopped.

#include <libcrossplatform/common/CableIDSeq.h>

#include <iostream>
#include <sstream>
#include <string>

namespace {

std::string takeNext(CableIDSeq& ids, std::ostream& job) {
  const std::string id = ids.takeNextID();
  if (!id.empty()) job << id << '\n';
  return id;
}

/// Rebuilds a sequence from a stored job, one ID a line: first, last, then the taken ones in the order they were taken.
/// False when the job names no set or an ID that cannot be taken from it.
bool resume(std::istream& job, CableIDSeq& ids) {
  std::string first, last, taken;
  if (!std::getline(job, first) || !std::getline(job, last) || !ids.verifyIDSet(first, last)) return false;
  while (std::getline(job, taken)) {
    if (!ids.pruneID(taken)) return false;
  }
  return true;
}

}  // namespace

int main() {
  std::stringstream job;  // a file, in an application
  CableIDSeq ids;
  if (!ids.verifyIDSet("R2-b07", "R2-d12")) return 1;
  job << ids.getFirstID() << '\n' << ids.getLastID() << '\n';
  std::cout << "Monday: " << ids.getFirstID() << " .. " << ids.getLastID() << " has " << ids.getTotal() << " IDs.\n";

  std::cout << "Labelled in order: " << takeNext(ids, job);
  std::cout << ", " << takeNext(ids, job) << ".\n";

  // The cable at hand already bears a label of the set: take that ID, and the sequence continues after it.
  if (ids.pruneID("R2-d11")) job << "R2-d11\n";
  std::cout << "Found labelled R2-d11, so the next one is " << takeNext(ids, job) << ",\n";
  std::cout << "which was the last of the set: on with the lowest free one, " << takeNext(ids, job) << ".\n";

  std::cout << "R2-e07 is" << (ids.pruneID("R2-e07") ? "" : " not") << " in the set; ";
  std::cout << "R2-b07 is" << (ids.updateNextID("R2-b07") ? "" : " not") << " free.\n";

  CableIDSeq resumed;
  if (!resume(job, resumed)) return 1;
  std::cout << "Tuesday: " << resumed.getUsed() << " IDs are taken; the sequence is "
            << (resumed == ids ? "the same" : "another one") << ". Row c first:";
  if (!resumed.updateNextID("R2-c07")) return 1;
  for (int i = 0; i < 3; ++i) std::cout << ' ' << takeNext(resumed, job);
  std::cout << ".\nR2-c10 comes next and then " << resumed.calcID("R2-c10") << "; "
            << resumed.getTotal() - resumed.getUsed() << " IDs are left, the lowest is " << resumed[0] << ".\n";
  return 0;
}
