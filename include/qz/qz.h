// The whole public interface of qz.
#pragma once

#include <qz/export.h>

// core: shared objects and text
#include <qz/core/auto_ptr.h>
#include <qz/core/char_class.h>
#include <qz/core/codepage.h>
#include <qz/core/com_types.h>
#include <qz/core/const_string.h>
#include <qz/core/format.h>
#include <qz/core/number_text.h>
#include <qz/core/smart_ptr.h>
#include <qz/core/split_join.h>
#include <qz/core/string_edit.h>
#include <qz/core/type_name.h>
#include <qz/core/user_locale.h>

// value: the variant value
#include <qz/value/value.h>

// errors: the exception model
#include <qz/errors/exceptions.h>
#include <qz/errors/generic.h>
#include <qz/errors/throw.h>
#include <qz/errors/tuning.h>

// sync: locks
#include <qz/sync/critical_section.h>
#include <qz/sync/lock.h>

// time
#include <qz/time/time.h>
