// <sys/vfs.h> where every file is a plain one.
#pragma once

struct statfs {
  long f_type;
};
inline int fstatfs(int, struct statfs*) {
  return -1;
}
