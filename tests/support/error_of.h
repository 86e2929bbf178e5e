// The error that an operation ends with, to be judged field by field.
#pragma once

#include "app/mg_err.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

// The MGErr that body throws; an empty one if it throws none.
template <class Body>
MGErr error_if_any(Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (const MGErr& err) {
        return err;
    }
    return {};
}

// The same, where it must throw one.
template <class Body>
MGErr error_of(Body&& body) {
    const MGErr err = error_if_any(std::forward<Body>(body));
    EXPECT_NE(err.GetString(), "") << "no MGErr was thrown";
    return err;
}

// What the log would say of it, and the condition or the call that body failed on.
template <class Body>
std::string error_text(Body&& body) {
    return error_if_any(std::forward<Body>(body)).GetString();
}
template <class Body>
std::string condition_of(Body&& body) {
    return error_if_any(std::forward<Body>(body)).func_2;
}
