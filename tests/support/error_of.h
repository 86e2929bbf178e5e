// The error that an operation ends with, to be judged field by field.
#pragma once

#include "app/mg_err.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

// The MGErr that body throws; if it throws none, the test fails and an empty one is given back.
template <class Body>
MGErr error_of(Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (const MGErr& err) {
        return err;
    }
    ADD_FAILURE() << "no MGErr was thrown";
    return {};
}

// What the log would say of the MGErr that body throws; empty if it throws none.
template <class Body>
std::string error_text(Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (const MGErr& err) {
        return err.GetString();
    }
    return "";
}

// The condition or the call that body failed on; empty if it throws none.
template <class Body>
std::string condition_of(Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (const MGErr& err) {
        return err.func_2;
    }
    return "";
}
