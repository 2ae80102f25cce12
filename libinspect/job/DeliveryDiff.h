#pragma once

#include <functional>
#include <string>
#include <vector>

#include <libinspect/container/FileDiff.h>
#include <libinspect/job/Job.h>

namespace Inspect {

/// How an ID differs between an old and a new delivery of a job: the first that applies.
enum class DeliveryChange {
  ONLY_OLD,
  ONLY_NEW,
  VERDICT,  ///< of the link
  VALUES,   ///< of a result that counts, or there is another number of them
  BYTES,    ///< the same values are stored otherwise
  UNKNOWN,  ///< a file could not be read
  SAME,     ///< every byte is
};
constexpr std::size_t DELIVERY_CHANGES = 7;
/// "only in old", "verdict changed" and so on.
const char* toString(DeliveryChange change);
/// Its name in JSON, for their number: "onlyInOld" and so on.
const char* memberName(DeliveryChange change);

/// What is compared of an ID: a file of each delivery, or of one that has nothing to compare with it.
struct ResultPair {
  std::string oldFile, newFile;                          ///< empty: none
  const ResultRow *oldRow = nullptr, *newRow = nullptr;  ///< null: none, or the result is lost
};

/// An ID in two deliveries. Borrows their links.
struct LinkPair {
  std::string id;
  const JobLink *before = nullptr, *after = nullptr;  ///< null in the delivery that has nothing of it
  /// The results that count; where none does, the damaged files. Of several those of one medium are pairs: first of the
  /// same tests, time and verdict, then of the same tests and time, then of the same tests, then the others.
  std::vector<ResultPair> results;
};

/// Makes the links of two deliveries anew. Each ID that one of them expects or has a result of is expected in both, so
/// that a damaged file named as an ID stands for it.
void settleDeliveries(Job& before, Job& after);

/// Each ID of one of the deliveries, in the order in which people count.
std::vector<LinkPair> pairLinks(const std::vector<JobLink>& before, const std::vector<JobLink>& after);

/// The damaged and unreadable files that stand for no ID, by their paths in their deliveries. Call it after
/// settleDeliveries().
/// @param oldPath,newPath  the folders or files that are the deliveries: two files are one pair whatever their names
std::vector<ResultPair> filesWithoutId(const Job& before, const std::string& oldPath, const Job& after,
                                       const std::string& newPath);
/// ONLY_OLD, ONLY_NEW, BYTES, UNKNOWN or SAME. Opens the files of a pair.
/// @param error  receives why a change is UNKNOWN
DeliveryChange compareBytes(const ResultPair& files, std::string& error);

constexpr char LINK_VERDICT[] = "verdict";  ///< the field of a difference that is not of one result, but of the ID

/// Receives a difference, and where it was found: of LINK_VERDICT the results are the first of the ID.
using OnLinkDifference = std::function<void(const ResultPair&, const Difference&)>;

/// Compares an ID. Opens its files.
/// @param fieldsOf,reveal  as differencesOf() has them
/// @param error            receives why a change is UNKNOWN
DeliveryChange compareLinks(const LinkPair& link, const FieldsOf& fieldsOf, bool reveal,
                            const OnLinkDifference& onDifference, std::string& error);

}  // namespace Inspect
