// <time.h> of a system that has no zone to look up again.
#pragma once
#include_next <time.h>
#ifdef __cplusplus
inline void tzset() {}
#endif
