// _DoNotInitialize: the tag that makes a wrapper's constructor open, create or
// read nothing, for members that are filled in later (by a Create..., Open...
// or restart call). Pass the exported constant DoNotInitialize:
//
//   TEvent ready(DoNotInitialize);   // no event yet
//   ready.CreateEventW(true, false);
//
// Thread safety: an empty constant; any thread may use it.
#pragma once

#include <qz/export.h>

struct _DoNotInitialize {};

extern QZ_API const _DoNotInitialize DoNotInitialize;
