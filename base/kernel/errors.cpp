// ErrMsg and Warning: format the message, then route it. In batch mode it goes to the batch log
// (to standard error while the log is not open yet, nowhere under -NOBATCHLOG); otherwise to a
// message box once graphics are up, and to standard error before that. Text for a stream is
// wrapped at 60 columns. A report raised while another is being written on the same thread is
// dropped, so a failure inside the reporting itself cannot recurse.
#include "base/kernel/errors.h"

#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

#include "base/kernel/alloc.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/strutil.h"

bool IsProcessingMacroCommand = false;
int MessageBoxesSuspended = 0;

namespace {

std::mutex reportMutex;
thread_local bool reporting = false;
bool errorsPending = false;
bool messageBoxIsUp = false;
MessageBoxCallback_pf messageBoxCallback = nullptr;

// Writes "<prefix>: <text>\n" with the text wrapped, to one stream.
void writeWrapped(FILE *stream, const char *prefix, const char *text) {
    char *wrapped = WrapString(text, MessageWrapWidth);
    fprintf(stream, "%s: %s\n", prefix, wrapped != nullptr ? wrapped : text);
    fflush(stream);
    newfree(wrapped);
}

void route(const char *prefix, const char *text, MessageBoxType_e kind) {
    if (InBatchMode) {
        if (BatchFile != nullptr)
            writeWrapped(BatchFile, prefix, text);
        else if (WriteBatchLog)
            writeWrapped(stderr, prefix, text);
        return;
    }
    if (kind == MessageBox_Error) errorsPending = true;
    if (GraphicsAreInitialized) {
        if (GeneralBase.Debug && StdError != stderr) writeWrapped(StdError, prefix, text);
        ProcessMessageBoxModalDialog(text, kind);
    } else {
        writeWrapped(stderr, prefix, text);
    }
}

void report(const char *prefix, MessageBoxType_e kind, const char *format, va_list args) {
    if (reporting) return;
    reporting = true;
    {
        std::lock_guard<std::mutex> lock(reportMutex);
        char *text = vFormatString(format, args);
        if (text != nullptr) {
            route(prefix, text, kind);
            newfree(text);
        }
    }
    reporting = false;
}

}  // namespace

void vErrMsg(const char *format, va_list args) { report("Err", MessageBox_Error, format, args); }

void ErrMsg(const char *format, ...) {
    va_list args;
    va_start(args, format);
    vErrMsg(format, args);
    va_end(args);
}

void Warning(const char *format, ...) {
    if (IsProcessingMacroCommand || !GeneralBase.EnableWarnings) return;
    va_list args;
    va_start(args, format);
    report("Warning", MessageBox_Warning, format, args);
    va_end(args);
}

bool ErrorsArePending() { return errorsPending; }
void ClearPendingErrors() { errorsPending = false; }

static MessageBoxReply_e DefaultReply(MessageBoxType_e kind) {
    return (kind == MessageBox_YesNo || kind == MessageBox_YesNoCancel) ? MessageBoxReply_Yes : MessageBoxReply_Ok;
}

MessageBoxReply_e ProcessMessageBoxModalDialog(const char *text, MessageBoxType_e kind) {
    if (InBatchMode || MessageBoxesSuspended > 0 || messageBoxIsUp) return DefaultReply(kind);
    if (kind == MessageBox_Information && !GeneralBase.EnablePauses) return DefaultReply(kind);
    messageBoxIsUp = true;
    if (messageBoxCallback != nullptr) {
        MessageBoxReply_e reply = messageBoxCallback(text, kind);
        messageBoxIsUp = false;
        return reply;
    }
    // No window layer: the text goes to standard error and the question takes its default answer.
    char *wrapped = WrapString(text, MessageWrapWidth);
    fprintf(stderr, "%s\n", wrapped != nullptr ? wrapped : text);
    fflush(stderr);
    newfree(wrapped);
    messageBoxIsUp = false;
    return DefaultReply(kind);
}

void MessageBoxRegisterCallback(MessageBoxCallback_pf callback) { messageBoxCallback = callback; }

void LogAction(const char *name, const char *arguments) {
    std::string line = std::string("ACTION: ") + name;
    size_t length = arguments != nullptr ? strlen(arguments) : 0;
    if (length > 0 && line.size() + 1 + length <= 60) line += std::string(" ") + arguments;
    if (GeneralBase.Debug && StdError != nullptr) fprintf(StdError, "%s\n", line.c_str());
    if (InBatchMode && BatchFile != nullptr) {
        fprintf(BatchFile, "%s\n", line.c_str());
        fflush(BatchFile);
    }
}
