// <setjmp.h> for libpng, which jumps out of an error: here an error ends the module.
#pragma once

typedef int jmp_buf[1];
#define setjmp(at) ((void)(at), 0)

#ifdef __cplusplus
extern "C" {
#endif
void longjmp(jmp_buf at, int value) __attribute__((noreturn));
#ifdef __cplusplus
}
#endif
