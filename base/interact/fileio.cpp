// Open_File/Close_File with the list of open files, and the checks of file names. Names that look
// like URLs are handed to the transfer layer; everything else is a local file.
#include "base/interact/fileio.h"

#include <algorithm>
#include <cstring>
#include <sys/stat.h>
#include <vector>

#include "base/interact/inet.h"
#include "base/interact/url.h"
#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/paths.h"
#include "base/kernel/tempdir.h"

namespace {

struct OpenFile_s {
    FILE *stream;
    std::string localName;
};
std::vector<OpenFile_s> OpenFileList;

void reportFileNameError(bool reportErrors, const char *what, const char *name) {
    if (reportErrors) ErrMsg("Filename Error: %s\nFileName: %s", what, ChopFilename(name).c_str());
}

// Length of a well-formed UTF-8 sequence starting at s (at least 2 bytes), or 0.
size_t utf8SequenceLength(const unsigned char *s) {
    unsigned char lead = s[0];
    size_t length;
    unsigned int codePoint;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        codePoint = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        codePoint = lead & 0x0F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        codePoint = lead & 0x07;
    } else {
        return 0;
    }
    for (size_t i = 1; i < length; i++) {
        if ((s[i] & 0xC0) != 0x80) return 0;
        codePoint = (codePoint << 6) | (s[i] & 0x3F);
    }
    // Refuse overlong forms, surrogates and code points past the last plane.
    if ((length == 3 && codePoint < 0x800) || (length == 4 && codePoint < 0x10000) ||
        (codePoint >= 0xD800 && codePoint <= 0xDFFF) || codePoint > 0x10FFFF)
        return 0;
    return length;
}

bool nameCharactersAreOk(const char *name) {
    const auto *s = reinterpret_cast<const unsigned char *>(name);
    while (*s != '\0') {
        if (*s >= 0x80) {
            size_t length = utf8SequenceLength(s);
            if (length > 0) {  // a character of a UTF-8 name
                s += length;
                continue;
            }
        }
        if (!IsOkFNameChar(*s)) return false;
        s++;
    }
    return true;
}

std::string trimmed(const char *name) {
    std::string s(name);
    size_t first = s.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return std::string();
    size_t last = s.find_last_not_of(" \t\r\n");
    return s.substr(first, last - first + 1);
}

bool isSupportedURL(const char *name) {
    URL_s *url = URLAlloc(name);
    if (url == nullptr) return false;
    char *scheme = URLGetScheme(url);
    bool supported = INetIsSupportedScheme(scheme);
    newfree(scheme);
    URLDealloc(&url);
    return supported;
}

}  // namespace

bool IsOkFNameChar(unsigned char c) {
    if (c <= 31 || (c >= 128 && c <= 159)) return false;
    return strchr("*?\"<>|\\", c) == nullptr;
}

std::string ChopFilename(const char *name) {
    if (name == nullptr) return std::string();
    size_t n = strlen(name);
    if (n <= 50) return name;
    return std::string("...") + (name + n - 47);
}

bool VerifyToOverwriteFile(const char *name) {
    std::string question = std::string("File ") + name + " exists.  Overwrite it?";
    return ProcessMessageBoxModalDialog(question.c_str(), MessageBox_YesNo) == MessageBoxReply_Yes;
}

bool FileExists(const char *name, bool reportErrors) {
    if (name == nullptr) return false;
    if (URLNameIsValidSyntax(name) && isSupportedURL(name)) return INetFileExists(name, reportErrors);
    return IsRegularFileOrOther(name);
}

bool IsValidFileName(const char *name, bool isReading, bool reportErrors) {
    if (name == nullptr || name[0] == '\0') {
        if (reportErrors) ErrMsg("Blank or missing filename.");
        return false;
    }
    if (URLNameIsProbableAttempt(name)) {
        if (!URLNameIsValidSyntax(name)) {
            if (reportErrors)
                ErrMsg("Invalid URL syntax. A URL should have the following form:\n"
                       "    scheme://[user[:password]@]host[:port]/path\n");
            return false;
        }
        if (!isSupportedURL(name)) {
            if (reportErrors) ErrMsg("Only the ftp and http URL protocol shemes are supported.");
            return false;
        }
        return true;
    }
    if (IsDirectory(name)) {
        reportFileNameError(reportErrors, "Attempt to open a directory.", name);
        return false;
    }
    if (!nameCharactersAreOk(name)) {
        reportFileNameError(reportErrors, "File name contains invalid characters.", name);
        return false;
    }
    const char *slash = strrchr(name, '/');
    if (slash != nullptr && slash != name) {
        std::string directory(name, static_cast<size_t>(slash - name));
        if (!IsDirectory(directory)) {
            reportFileNameError(reportErrors, "Directory is invalid.", name);
            return false;
        }
    }
    if (isReading && !IsRegularFileOrOther(name)) {
        reportFileNameError(reportErrors, "File does not exist.", name);
        return false;
    }
    return true;
}

bool Open_File(FILE **stream, const char *name, bool isReading, bool isAppend, bool overwriteConfirmed,
               bool reportErrors, bool isAscii) {
    *stream = nullptr;
    if (GeneralBase.Trace) fprintf(stderr, "Opening File: %s\n  IsReading = %d\n", name ? name : "", isReading);
    bool ok = false;
    std::string fileName = name != nullptr ? trimmed(name) : std::string();
    std::string localName = fileName;
    if (fileName.empty()) {
        if (reportErrors) ErrMsg("Invalid filename");
    } else if (IsValidFileName(fileName.c_str(), isReading, reportErrors)) {
        ok = true;
        if (URLNameIsValidSyntax(fileName.c_str())) {
            // A remote file goes through a local copy in the temporary directory.
            ok = GetRandomFileName(&localName);
            if (ok && (isReading || isAppend))
                ok = INetDownloadFile(fileName.c_str(), localName.c_str(),
                                      isAscii ? INetTransferMode_Ascii : INetTransferMode_Binary, false, reportErrors);
            else if (ok)  // a written copy could not be put back on the server: refuse now, not at close
                ok = INetUploadFile(localName.c_str(), fileName.c_str(),
                                    isAscii ? INetTransferMode_Ascii : INetTransferMode_Binary, false, reportErrors);
            if (!ok && localName != fileName) remove(localName.c_str());
        } else if (!isReading && !isAppend && !overwriteConfirmed && IsRegularFileOrOther(localName) &&
                   !VerifyToOverwriteFile(localName.c_str())) {
            ok = false;  // the user kept the file; no message
            reportErrors = false;
        }
        if (ok) {
            const char *mode = isReading ? (isAscii ? "r" : "rb") : isAppend ? (isAscii ? "r+" : "r+b")
                                                                               : (isAscii ? "w" : "wb+");
            *stream = fopen(localName.c_str(), mode);
            if (*stream != nullptr && isAppend) fseek(*stream, 0, SEEK_END);
            ok = *stream != nullptr;
            if (!ok && reportErrors) {
                if (isReading)
                    ErrMsg("Cannot open file: %s for reading. Check the file name and its permissions.",
                           fileName.c_str());
                else
                    ErrMsg("Cannot open file: %s for writing. Bad filename, invalid permissions, or attempt to "
                           "write to a directory.",
                           fileName.c_str());
            }
        }
    }
    if (ok) OpenFileList.push_back({*stream, localName});
    if (ok && GeneralBase.Debug) fprintf(StdError, "Opening File: %s\n", fileName.c_str());
    if (GeneralBase.Trace) fprintf(stderr, "  IsOk = %d\n", ok);
    return ok;
}

bool Close_File(FILE **stream, bool reportErrors) {
    if (*stream == nullptr) return true;
    std::string localName;
    auto it = std::find_if(OpenFileList.begin(), OpenFileList.end(),
                           [stream](const OpenFile_s &f) { return f.stream == *stream; });
    if (it != OpenFileList.end()) {
        localName = it->localName;
        OpenFileList.erase(it);
    }
    bool ok = fclose(*stream) == 0;
    *stream = nullptr;
    if (!ok && reportErrors)
        ErrMsg("I/O error on file \"%s\". Check disk space or file permissions.", localName.c_str());
    return ok;
}

int OpenFileCount() { return static_cast<int>(OpenFileList.size()); }
