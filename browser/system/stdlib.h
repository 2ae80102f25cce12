// <stdlib.h> of a system without temporary files: nothing here is a pipe, for which one would be needed.
#pragma once
#include_next <stdlib.h>
#ifdef __cplusplus
inline int mkostemp(char*, int) {
  return -1;
}
#endif
