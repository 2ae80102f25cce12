#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <string>
#include <utility>

namespace Project {

/// Names a project: the identifier machines use and the name its users gave it.
struct ProjectId {
  ProjectId() = default;
  ProjectId(std::string identifier, std::string projectName)
      : id(std::move(identifier)), name(std::move(projectName)) {}

  bool operator==(const ProjectId& other) const { return id == other.id && name == other.name; }
  bool operator!=(const ProjectId& other) const { return !(*this == other); }

  std::string id;    ///< for machines
  std::string name;  ///< for its users
};

}  // namespace Project
