// One definition for each window that open_dialogs.h declares.
#include "dialog/open_dialogs.h"

MGDialog* ProfileDialog = nullptr;
MGDialog* Enter2Dialog = nullptr;
MGDialog* SettingsDialog = nullptr;
MGDialog* AboutDialog = nullptr;
MGDialog* ConfigDialog = nullptr;
MGDialog* ActiveDialog = nullptr;
MGDialog* ConsoleDialog = nullptr;
MGDialog* SendDialog = nullptr;
MGDialog* CopyDialog = nullptr;
MGDialog* RunprogDialog = nullptr;
MGDialog* ExistDialog = nullptr;
MGDialog* CryptoDialog = nullptr;
MGDialog* ResultDialog = nullptr;
MGDialog* SubjectDialog = nullptr;
MGDialog* QueueDialog = nullptr;
MGDialog* AllowDialog = nullptr;
MGDialog* AdrsDialog = nullptr;
MGDialog* AddressDialog = nullptr;

std::deque<MGDialog*> stackAdmitDialog;
