// The error of a step, in a form that compares and prints as a whole.
#pragma once

#include "app/mg_err.h"

#include <string>
#include <vector>

// mess_1, mess_2, func_1, func_2, opt_param, str_param, ext_param, num_param.
using ErrorFields = std::vector<std::string>;

// The MGErr that the step throws; nothing where it throws none.
template <class Step>
ErrorFields error_of(Step&& step) {
    try {
        step();
    } catch (const MGErr& err) {
        return {err.mess_1,    err.mess_2,    err.func_1,    err.func_2,
                err.opt_param, err.str_param, err.ext_param, std::to_string(err.num_param)};
    }
    return {};
}

// What a reader tells: all of it names the operation and, in opt_param, the file or the XML name.
struct ReaderErrors {
    std::string mess_1, func_1, opt_param;

    ErrorFields check(const char* mess_2, const char* func_2, const std::string& str = "", const std::string& ext = "",
                      const std::string& num = "0") const {
        return {mess_1, mess_2, func_1, func_2, opt_param, str, ext, num};
    }
    ErrorFields surplus(const char* name, const char* num) const {
        return check("Количество правил для входящих сообщений в XML файле превышает значение, заданное в атрибуте",
                     "counter == quantity", "quantity", name, num);
    }
    ErrorFields missing(const char* name, const char* num) const {
        return check("Количество правил для входящих сообщений в XML файле меньше, чем значение, заданное в атрибуте",
                     "counter != quantity", "quantity", name, num);
    }
};

// What the XML layer tells of an attribute that is missing or holds no number, and of an element that is missing.
inline ErrorFields no_prop(const char* name) {
    return ReaderErrors{"Ошибка получения свойства раздела", "GetTextProp", name}.check(
        "Не удалось получить значение свойства", "xmlGetProp");
}
inline ErrorFields no_number(const char* conversion, const char* name, const char* text) {
    return ReaderErrors{"Ошибка получения свойства раздела", "GetNumberPropExt", name}.check(
        "Свойства не содержит числовое значение", conversion, text);
}
inline ErrorFields no_child(const char* name) {
    return ReaderErrors{"Ошибка получения первого подчиненного раздела", "GetFirstChildren", name}.check(
        "Не удалось найти подчиненный раздел", "");
}
