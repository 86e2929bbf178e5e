// The windows that may be open, which every handler reaches by name: the pointer of a dialog is null while that dialog
// is closed. One thread uses them, the toolkit's.
#pragma once

#include <deque>

class MGDialog;

// The main window, which lives until shutdown.
extern MGDialog* ProfileDialog;

// The modal dialogs: each is set by the operation that opens it, for as long as the dialog is open.
extern MGDialog* Enter2Dialog;
extern MGDialog* SettingsDialog;
extern MGDialog* AboutDialog;
extern MGDialog* ConfigDialog;
extern MGDialog* ActiveDialog;
extern MGDialog* ConsoleDialog;
extern MGDialog* SendDialog;
extern MGDialog* CopyDialog;
extern MGDialog* RunprogDialog;
extern MGDialog* ExistDialog;
extern MGDialog* CryptoDialog;
extern MGDialog* ResultDialog;
extern MGDialog* SubjectDialog;
extern MGDialog* QueueDialog;
extern MGDialog* AllowDialog;
extern MGDialog* AdrsDialog;
extern MGDialog* AddressDialog;

// The open admission list dialogs, which nest; the one that the user works in stands at the back.
extern std::deque<MGDialog*> stackAdmitDialog;
