// How windows are opened and how a handler ends: the owner of an open dialog, the boxes that every dialog shows, and
// the edge past which no exception may go, since the toolkit's C code cannot carry one. On the toolkit's thread only.
#pragma once

#include "app/mg_err.h"
#include "dialog/mg_dialog.h"

#include <deque>
#include <utility>

// A new MGDialog on the object `object_id` of the program's own interface definition. The caller owns it.
MGDialog* make_dialog(const char* object_id);

// An open dialog: makes it, keeps it in its global or on the stack of its kind, gives it the title; the end of the
// scope deletes it and sets the global to null, or takes it off the stack. Owners must end in reverse order.
class OpenDialog {
public:
    OpenDialog(MGDialog*& global, const char* object_id, const char* title);
    OpenDialog(std::deque<MGDialog*>& stack, const char* object_id, const char* title);
    ~OpenDialog();
    OpenDialog(const OpenDialog&) = delete;
    OpenDialog& operator=(const OpenDialog&) = delete;

    MGDialog* operator->() const { return dialog_; }
    MGDialog& operator*() const { return *dialog_; }
    MGDialog* get() const { return dialog_; }

    // Shows and runs the dialog; whether the user confirmed it.
    bool RunOk();

private:
    MGDialog* dialog_;
    MGDialog** global_ = nullptr;
    std::deque<MGDialog*>* stack_ = nullptr;
};

// Boxes over `dialog`; a null one shows nothing.
void show_message(MGDialog* dialog, const char* text); // "Сообщение": a remark about the user's input
void show_refusal(MGDialog* dialog, const char* text); // "Ошибка": a value that is refused; not logged
bool ask_yes_no(MGDialog* dialog, const char* text);   // "Вопрос": whether the answer was yes
// Ends the run of a dialog, given as the toolkit hands it to handlers, with GTK_RESPONSE_OK. Where a number is shown
// that differs from the one that was typed, the dialog stays, and the number has the focus (number_habits.h).
void respond_ok(gpointer dialog);
// Writes the error to the log and shows it in a box titled "Ошибка".
void show_error(MGDialog* dialog, MGErr& err);

// Runs the body of a handler. Whatever it throws is logged and shown over `over`, and nothing leaves. `handler` is the
// caller's name, for errors that bear none of their own.
template <class Body>
void at_handler(MGDialog* over, Body&& body, const char* handler = __builtin_FUNCTION()) noexcept {
    try {
        vorma::at_edge(handler, [&] {
            try {
                std::forward<Body>(body)();
            } catch (const MGExit&) {
                vorma::throw_foreign(handler, "Любое исключение", "");
            }
        });
    } catch (MGErr& err) {
        show_error(over, err);
    }
}
