#include <qz/os/do_not_initialize.h>

const _DoNotInitialize DoNotInitialize{};
