// Text on its way into a widget. The toolkit wants UTF-8 and hands the text on to the accessibility bus, which ends the
// program over anything else; a file's name need not be UTF-8. On the toolkit's thread only.
#pragma once

#include "dialog/gtk_owner.h"

// The text, with U+FFFD for what is no UTF-8. Points to the given text where nothing has to be replaced.
class ValidText {
public:
    explicit ValidText(const char* text) : text_(text) {
        if (!text || g_utf8_validate(text, -1, nullptr)) return;
        replaced_.reset(g_utf8_make_valid(text, -1));
        text_ = replaced_.get();
    }
    const char* get() const { return text_; }

private:
    GtkText replaced_;
    const char* text_;
};
