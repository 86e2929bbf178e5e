// Texts of the reader's errors.
#include "cert/der_errors.h"

const char* err2str(uint32_t code) {
    switch (code) {
#define DER_TEXT(name, number, text)                                                                                   \
    case name:                                                                                                         \
        return text;
        DER_ERRORS(DER_TEXT)
#undef DER_TEXT
    default:
        return "Нет описания этой ошибки";
    }
}
