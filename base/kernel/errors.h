// Reporting for the whole system: ErrMsg for errors, Warning for warnings, and the message box
// that asks the user a question. In batch mode messages go to the batch log; before the log is
// open, or without graphics, to standard error. Text for a stream is wrapped at 60 columns.
#pragma once

#include <cstdarg>

constexpr int MessageWrapWidth = 60;

enum MessageBoxType_e {
    MessageBox_Error = 0,
    MessageBox_Warning = 1,
    MessageBox_Information = 2,
    MessageBox_OkCancel = 3,
    MessageBox_YesNo = 4,
    MessageBox_YesNoCancel = 5,
    MessageBox_WarningOkCancel = 6
};

enum MessageBoxReply_e {
    MessageBoxReply_Yes = 0,
    MessageBoxReply_No = 1,
    MessageBoxReply_Cancel = 2,
    MessageBoxReply_Ok = 3
};

// printf-style; the format is the system's own (translated) text.
void ErrMsg(const char *format, ...) __attribute__((format(printf, 1, 2)));
void Warning(const char *format, ...) __attribute__((format(printf, 1, 2)));
void vErrMsg(const char *format, va_list args);

// True once ErrMsg has reported something that no one has looked at yet.
bool ErrorsArePending();
void ClearPendingErrors();

// Shows a modal box of the given kind and returns the answer. In batch mode, while boxes are
// suspended, or while a box is already up, it answers at once: yes for the yes/no kinds, OK else.
MessageBoxReply_e ProcessMessageBoxModalDialog(const char *text, MessageBoxType_e kind);

// The window layer registers the box it shows; without one the text goes to standard error.
using MessageBoxCallback_pf = MessageBoxReply_e (*)(const char *text, MessageBoxType_e kind);
void MessageBoxRegisterCallback(MessageBoxCallback_pf callback);

// Set while a macro command runs: warnings are not shown then.
extern bool IsProcessingMacroCommand;
// The count of open suspensions of message boxes.
extern int MessageBoxesSuspended;

// The log line of an action, written once its checks have passed: "ACTION: NAME", with a short
// argument text while the line stays within 60 columns, to the batch log when one is open and
// to standard error when PRINTDEBUG is on.
void LogAction(const char *name, const char *arguments = nullptr);
