#include "base/interact/inet.h"

#include <strings.h>

#include "base/kernel/errors.h"

void INetInitialize() {}
void INetFinalize() {}

bool INetIsSupportedScheme(const char *scheme) {
    return scheme != nullptr && (strcasecmp(scheme, "ftp") == 0 || strcasecmp(scheme, "http") == 0);
}

bool INetFileExists(const char *, bool) { return false; }

bool INetDownloadFile(const char *, const char *, INetTransferMode_e, bool, bool reportErrors) {
    if (reportErrors) ErrMsg("Transfer failed.");
    return false;
}

bool INetUploadFile(const char *, const char *, INetTransferMode_e, bool, bool reportErrors) {
    if (reportErrors) ErrMsg("Transfer failed.");
    return false;
}
