// <linux/magic.h>: the one file system that is asked for.
#pragma once
#define PIPEFS_MAGIC 0x50495045
