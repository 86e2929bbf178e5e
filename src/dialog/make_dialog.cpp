// Opening windows, the boxes that every dialog shows, and the handlers that dialogs share.
#include "dialog/make_dialog.h"

#include "app/log.h"
#include "dialog/handlers.h"
#include "dialog/number_habits.h"

MGDialog* make_dialog(const char* object_id) {
    return new MGDialog("/selunara/vorma", "vormacfg.glade", object_id);
}

OpenDialog::OpenDialog(MGDialog*& global, const char* object_id, const char* title)
    : dialog_(make_dialog(object_id)), global_(&global) {
    global = dialog_;
    dialog_->WindowSetName(title);
}

OpenDialog::OpenDialog(std::deque<MGDialog*>& stack, const char* object_id, const char* title)
    : dialog_(make_dialog(object_id)), stack_(&stack) {
    stack.push_back(dialog_);
    dialog_->WindowSetName(title);
}

OpenDialog::~OpenDialog() {
    delete dialog_;
    if (global_) *global_ = nullptr;
    if (stack_) stack_->pop_back();
}

bool OpenDialog::RunOk() {
    dialog_->Show();
    return dialog_->Run() == GTK_RESPONSE_OK;
}

void show_message(MGDialog* dialog, const char* text) {
    if (dialog) dialog->MessageBox("Сообщение", text, GTK_MESSAGE_INFO, GTK_BUTTONS_OK);
}

void show_refusal(MGDialog* dialog, const char* text) {
    if (dialog) dialog->MessageBox("Ошибка", text, GTK_MESSAGE_ERROR, GTK_BUTTONS_OK);
}

bool ask_yes_no(MGDialog* dialog, const char* text) {
    return dialog && dialog->MessageBox("Вопрос", text, GTK_MESSAGE_QUESTION, GTK_BUTTONS_YES_NO) == GTK_RESPONSE_YES;
}

void show_error(MGDialog* dialog, MGErr& err) {
    LogFileGlobal.PrintErrInLogFile(err);
    show_refusal(dialog, err.GetString().c_str());
}

void respond_ok(gpointer dialog) {
    if (!shows_corrected_number(GTK_WINDOW(dialog))) gtk_dialog_response(GTK_DIALOG(dialog), GTK_RESPONSE_OK);
}

void button_ok(GtkWidget*, gpointer dialog) {
    respond_ok(dialog);
}

void button_cancel(GtkWidget*, gpointer dialog) {
    gtk_dialog_response(GTK_DIALOG(dialog), GTK_RESPONSE_CANCEL);
}
