// The error that an operation fills on entry.
#pragma once

#include "app/mg_err.h"

inline MGErr error_of(const char* func_1, const char* mess_1) {
    MGErr err;
    err.func_1 = func_1;
    err.mess_1 = mess_1;
    return err;
}
