// The URL record: parsing, checking and printing, and the percent-encoding underneath them.
// Relies only on the counted allocator; all strings are made by newmalloc. A parse either yields
// a complete record or frees everything it made; setters build their new parts first and swap
// them in only when every copy succeeded, so running out of memory never leaves half a record.
#include "base/interact/url.h"

#include <cstdio>
#include <cstring>

#include "base/kernel/alloc.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/strutil.h"

namespace {

// The greatest port a URL may name: 32767, the largest signed 16-bit value, not 65535.
constexpr int32_t MaxPort = 32767;
constexpr int32_t DefaultHttpPort = 80;
constexpr int32_t DefaultFtpPort = 21;

// Extra characters each part may carry unencoded beyond the safe set.
const char *const PathExtraSafeWhenParsing = "/\\:";
const char *const PathExtraSafeWhenPrinting = "/";
const char *const QueryExtraSafe = "&=";

enum class Scheme { Ftp, Http, File, Other };

// Owns one newmalloc'd block until released; keeps the early returns of the parser and the
// printer free of leaks.
class OwnedText {
public:
    OwnedText() = default;
    explicit OwnedText(char *text) : text_(text) {}
    ~OwnedText() { newfree(text_); }
    OwnedText(const OwnedText &) = delete;
    OwnedText &operator=(const OwnedText &) = delete;
    char *Get() const { return text_; }
    char *Release() {
        char *text = text_;
        text_ = nullptr;
        return text;
    }

private:
    char *text_ = nullptr;
};

// Owns a whole record until released.
class OwnedURL {
public:
    explicit OwnedURL(URL_s *url) : url_(url) {}
    ~OwnedURL() { URLDealloc(&url_); }
    OwnedURL(const OwnedURL &) = delete;
    OwnedURL &operator=(const OwnedURL &) = delete;
    URL_s *Get() const { return url_; }
    URL_s *Release() {
        URL_s *url = url_;
        url_ = nullptr;
        return url;
    }

private:
    URL_s *url_;
};

bool isAsciiLetter(unsigned char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isAsciiDigit(unsigned char c) { return c >= '0' && c <= '9'; }

// The value of a hexadecimal digit, or -1 for any other character.
int hexValue(unsigned char c) {
    if (isAsciiDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool isSafeChar(unsigned char c) {
    return isAsciiLetter(c) || isAsciiDigit(c) || (c != '\0' && strchr("&~$-_.+!*'(),", c) != nullptr);
}

// strchr would find the terminator for a zero byte, so that byte is never "in" the set.
bool isExtraSafeChar(unsigned char c, const char *extraSafe) {
    return extraSafe != nullptr && c != '\0' && strchr(extraSafe, c) != nullptr;
}

char *copyText(const char *text, size_t length) { return CopySubString(text, 0, LgIndex_t(length)); }

// A copy of a part that may be absent. *ok turns false only when memory runs out.
char *copyPart(const char *text, bool *ok) {
    if (text == nullptr) return nullptr;
    char *copy = copyText(text, strlen(text));
    if (copy == nullptr) *ok = false;
    return copy;
}

int32_t *copyPort(const int32_t *port, bool *ok) {
    if (port == nullptr) return nullptr;
    auto *copy = static_cast<int32_t *>(newmalloc(sizeof(int32_t)));
    if (copy == nullptr) {
        *ok = false;
        return nullptr;
    }
    *copy = *port;
    return copy;
}

// Compares two parts without regard to ASCII case; an absent part equals only an absent one.
bool partsMatch(const char *a, const char *b) { return ustrcmp(a, b) == 0; }

Scheme schemeOf(const char *scheme) {
    if (partsMatch(scheme, "ftp")) return Scheme::Ftp;
    if (partsMatch(scheme, "http")) return Scheme::Http;
    if (partsMatch(scheme, "file")) return Scheme::File;
    return Scheme::Other;
}

int32_t effectivePort(const URL_s *url) {
    if (url->Port != nullptr) return *url->Port;
    switch (schemeOf(url->Scheme)) {
    case Scheme::Http: return DefaultHttpPort;
    case Scheme::Ftp: return DefaultFtpPort;
    default: return 0;
    }
}

URL_s *newEmptyRecord() {
    auto *url = static_cast<URL_s *>(newmalloc(sizeof(URL_s)));
    if (url != nullptr) *url = URL_s{};
    return url;
}

void freeParts(URL_s *url) {
    newfree(url->Scheme);
    newfree(url->UserName);
    newfree(url->Password);
    newfree(url->HostName);
    newfree(url->Port);
    newfree(url->Path);
    newfree(url->Query);
    newfree(url->Reference);
    *url = URL_s{};
}

// Checks and decodes the text [start, end) into *part. An empty text leaves *part null and is
// accepted here; each caller applies its own rule about empty parts.
bool decodePart(const char *start, const char *end, const char *extraSafe, char **part) {
    REQUIRE(*part == nullptr);
    size_t length = static_cast<size_t>(end - start);
    if (length == 0) return true;
    if (!URLEncodingIsValid(start, length, extraSafe)) return false;
    *part = URLDecodeString(start, length);
    return *part != nullptr;
}

// The login of an ftp URL, [start, end) before its "@": the user name up to the first ":", the
// password behind it. Either may be empty and then stays null.
bool parseLogin(const char *start, const char *end, URL_s *url) {
    const auto *colon = static_cast<const char *>(memchr(start, ':', static_cast<size_t>(end - start)));
    if (colon == nullptr) return decodePart(start, end, nullptr, &url->UserName);
    return decodePart(start, colon, nullptr, &url->UserName) &&
           decodePart(colon + 1, end, nullptr, &url->Password);
}

// The host part [start, end): a host name, then optionally ":" and a decimal port.
bool parseHostAndPort(const char *start, const char *end, bool hostRequired, bool portAllowed, URL_s *url) {
    const auto *colon = static_cast<const char *>(memchr(start, ':', static_cast<size_t>(end - start)));
    const char *hostEnd = colon != nullptr ? colon : end;
    if (hostRequired && hostEnd == start) return false;
    if (!decodePart(start, hostEnd, nullptr, &url->HostName)) return false;
    if (colon == nullptr) return true;
    if (!portAllowed) return false;

    const char *digits = colon + 1;
    if (digits == end) return false;
    int32_t port = 0;
    for (const char *c = digits; c < end; ++c) {
        if (!isAsciiDigit(static_cast<unsigned char>(*c))) return false;
        port = port * 10 + (*c - '0');
        // Stopping at the first excess keeps the accumulation far from overflow.
        if (port > MaxPort) return false;
    }
    bool ok = true;
    url->Port = copyPort(&port, &ok);
    return ok;
}

// The part behind the slash that ends the host: path, then "?" and the query, then "#" and the
// reference. The "//" test runs on the decoded path so that an encoded slash beside a real one is
// caught as well.
bool parsePathQueryReference(const char *start, Scheme scheme, URL_s *url) {
    const char *end = start + strlen(start);
    const char *question = strchr(start, '?');
    const char *hash = strchr(question != nullptr ? question + 1 : start, '#');
    const char *pathEnd = question != nullptr ? question : (hash != nullptr ? hash : end);

    if (scheme == Scheme::File && pathEnd == start) return false;
    if (!decodePart(start, pathEnd, PathExtraSafeWhenParsing, &url->Path)) return false;
    if (url->Path != nullptr && strstr(url->Path, "//") != nullptr) return false;

    if (question != nullptr) {
        const char *queryEnd = hash != nullptr ? hash : end;
        if (queryEnd == question + 1) return false;
        if (!decodePart(question + 1, queryEnd, QueryExtraSafe, &url->Query)) return false;
    }
    if (hash != nullptr) {
        if (hash + 1 == end) return false;
        if (!decodePart(hash + 1, end, nullptr, &url->Reference)) return false;
    }
    return true;
}

// Fills the empty record from the text; on false the record may hold some parts, which the
// caller frees.
bool parseURL(const char *text, URL_s *url) {
    const char *colon = strchr(text, ':');
    if (colon == nullptr || colon == text) return false;
    url->Scheme = copyText(text, static_cast<size_t>(colon - text));
    if (url->Scheme == nullptr) return false;
    LowerCaseStr(url->Scheme);

    Scheme scheme = schemeOf(url->Scheme);
    if (scheme == Scheme::Other) return false;
    if (colon[1] != '/' || colon[2] != '/' || colon[3] == '\0') return false;

    const char *rest = colon + 3;
    // Only http carries a query; a "?" anywhere else has no meaning and is refused.
    if (scheme != Scheme::Http && strchr(rest, '?') != nullptr) return false;

    const char *hostStart = rest;
    if (scheme == Scheme::Ftp) {
        const char *at = strchr(rest, '@');
        if (at != nullptr) {
            if (!parseLogin(rest, at, url)) return false;
            hostStart = at + 1;
        }
    }

    const char *hostEnd = strchr(hostStart, '/');
    if (hostEnd == nullptr) hostEnd = strchr(hostStart, '#');
    if (hostEnd == nullptr) hostEnd = hostStart + strlen(hostStart);
    // A file URL always has its path, so the slash that starts it must be there.
    if (scheme == Scheme::File && *hostEnd != '/') return false;

    bool isFile = scheme == Scheme::File;
    if (!parseHostAndPort(hostStart, hostEnd, !isFile, !isFile, url)) return false;

    if (*hostEnd == '/') return parsePathQueryReference(hostEnd + 1, scheme, url);
    if (*hostEnd == '#') {
        if (hostEnd[1] == '\0') return false;
        return decodePart(hostEnd + 1, hostEnd + strlen(hostEnd), nullptr, &url->Reference);
    }
    return true;
}

// Encodes a part that may be absent; *ok turns false only when memory runs out.
char *encodePart(const char *text, const char *extraSafe, bool *ok) {
    if (text == nullptr) return nullptr;
    char *encoded = URLEncodeString(text, strlen(text), extraSafe);
    if (encoded == nullptr) *ok = false;
    return encoded;
}

// Appends to a buffer whose size was computed beforehand.
class TextBuilder {
public:
    explicit TextBuilder(char *buffer) : buffer_(buffer) {}
    void Append(const char *text) {
        size_t length = strlen(text);
        memcpy(buffer_ + used_, text, length);
        used_ += length;
        buffer_[used_] = '\0';
    }
    size_t Used() const { return used_; }

private:
    char *buffer_;
    size_t used_ = 0;
};

}  // namespace

URL_s *URLAlloc(const char *text) {
    if (text == nullptr || *text == '\0') return nullptr;
    OwnedURL url(newEmptyRecord());
    if (url.Get() == nullptr) return nullptr;
    if (!parseURL(text, url.Get())) return nullptr;
    return url.Release();
}

void URLDealloc(URL_s **url) {
    REQUIRE(url != nullptr);
    if (*url == nullptr) return;
    freeParts(*url);
    newfree(*url);
    *url = nullptr;
}

URL_s *URLCopy(const URL_s *url) {
    if (url == nullptr) return nullptr;
    OwnedURL copy(newEmptyRecord());
    if (copy.Get() == nullptr) return nullptr;
    if (!URLSetParts(copy.Get(), url->Scheme, url->UserName, url->Password, url->HostName, url->Port,
                     url->Path, url->Query, url->Reference)) {
        return nullptr;
    }
    return copy.Release();
}

bool URLSet(URL_s *url, const char *text) {
    REQUIRE(url != nullptr);
    URL_s *parsed = URLAlloc(text);
    if (parsed == nullptr) return false;
    freeParts(url);
    *url = *parsed;
    // The parts now belong to url; only the shell of the parsed record is left to free.
    newfree(parsed);
    return true;
}

bool URLSetParts(URL_s *url,
                 const char *scheme,
                 const char *userName,
                 const char *password,
                 const char *hostName,
                 const int32_t *port,
                 const char *path,
                 const char *query,
                 const char *reference) {
    REQUIRE(url != nullptr);
    bool ok = true;
    URL_s parts{};
    parts.Scheme = copyPart(scheme, &ok);
    parts.UserName = copyPart(userName, &ok);
    parts.Password = copyPart(password, &ok);
    parts.HostName = copyPart(hostName, &ok);
    parts.Port = copyPort(port, &ok);
    parts.Path = copyPart(path, &ok);
    parts.Query = copyPart(query, &ok);
    parts.Reference = copyPart(reference, &ok);
    if (!ok) {
        freeParts(&parts);
        return false;
    }
    if (parts.Scheme != nullptr) {
        LowerCaseStr(parts.Scheme);
    }
    freeParts(url);
    *url = parts;
    return true;
}

bool URLSetUserNameAndPassword(URL_s *url, const char *userName, const char *password) {
    REQUIRE(url != nullptr);
    bool ok = true;
    OwnedText newUserName(copyPart(userName, &ok));
    OwnedText newPassword(copyPart(password, &ok));
    if (!ok) return false;
    newfree(url->UserName);
    newfree(url->Password);
    url->UserName = newUserName.Release();
    url->Password = newPassword.Release();
    return true;
}

bool URLSetPort(URL_s *url, const int32_t *port) {
    REQUIRE(url != nullptr);
    bool ok = true;
    int32_t *newPort = copyPort(port, &ok);
    if (!ok) return false;
    newfree(url->Port);
    url->Port = newPort;
    return true;
}

bool URLSetReference(URL_s *url, const char *reference) {
    REQUIRE(url != nullptr);
    bool ok = true;
    char *newReference = copyPart(reference, &ok);
    if (!ok) return false;
    newfree(url->Reference);
    url->Reference = newReference;
    return true;
}

// Out of memory and an absent part both give null; the callers of the accessors treat a missing
// part and a failed copy alike, as "not available".
char *URLGetScheme(const URL_s *url) {
    REQUIRE(url != nullptr);
    bool ok = true;
    return copyPart(url->Scheme, &ok);
}

char *URLGetUserName(const URL_s *url) {
    REQUIRE(url != nullptr);
    bool ok = true;
    return copyPart(url->UserName, &ok);
}

char *URLGetPassword(const URL_s *url) {
    REQUIRE(url != nullptr);
    bool ok = true;
    return copyPart(url->Password, &ok);
}

char *URLGetHostName(const URL_s *url) {
    REQUIRE(url != nullptr);
    bool ok = true;
    return copyPart(url->HostName, &ok);
}

bool URLGetPort(const URL_s *url, int32_t *port) {
    REQUIRE(url != nullptr && port != nullptr);
    if (url->Port == nullptr) return false;
    *port = *url->Port;
    return true;
}

char *URLGetPath(const URL_s *url) {
    REQUIRE(url != nullptr);
    bool ok = true;
    return copyPart(url->Path, &ok);
}

char *URLGetQuery(const URL_s *url) {
    REQUIRE(url != nullptr);
    bool ok = true;
    return copyPart(url->Query, &ok);
}

char *URLGetReference(const URL_s *url) {
    REQUIRE(url != nullptr);
    bool ok = true;
    return copyPart(url->Reference, &ok);
}

bool URLNameIsProbableAttempt(const char *name) {
    if (name == nullptr) return false;
    const char *slash = strchr(name, '/');
    // Positions 0 and 1 hold at most a drive letter and its ":", so the ":" must be at 2 or later.
    return slash != nullptr && slash - name >= 3 && slash[-1] == ':';
}

bool URLNameIsValidSyntax(const char *name) {
    URL_s *url = URLAlloc(name);
    bool isValid = url != nullptr;
    URLDealloc(&url);
    return isValid;
}

bool URLIsValid(const URL_s *url) {
    if (url == nullptr) return false;
    if (url->Scheme == nullptr || url->Scheme[0] == '\0') return false;
    if (url->UserName != nullptr && url->UserName[0] == '\0') return false;
    if (url->Password != nullptr &&
        (url->Password[0] == '\0' || url->UserName == nullptr || url->UserName[0] == '\0')) {
        return false;
    }
    bool isFile = schemeOf(url->Scheme) == Scheme::File;
    if (url->HostName == nullptr ? !isFile : url->HostName[0] == '\0') return false;
    if (url->Port != nullptr && *url->Port < 0) return false;
    if (url->Path == nullptr ? !isFile : url->Path[0] == '\0') return false;
    if (url->Query != nullptr && url->Query[0] == '\0') return false;
    if (url->Reference != nullptr && url->Reference[0] == '\0') return false;
    return true;
}

bool URLIsSameAddress(const URL_s *a, const URL_s *b) {
    if (a == b) return true;
    if (a == nullptr || b == nullptr) return false;
    return partsMatch(a->Scheme, b->Scheme) && partsMatch(a->UserName, b->UserName) &&
           partsMatch(a->HostName, b->HostName) && partsMatch(a->Path, b->Path) &&
           partsMatch(a->Query, b->Query) && partsMatch(a->Reference, b->Reference) &&
           effectivePort(a) == effectivePort(b);
}

char *URLGetEncodedName(const URL_s *url,
                        bool withUser,
                        bool withPassword,
                        bool withPort,
                        bool withQuery,
                        bool withReference) {
    REQUIRE(url != nullptr);
    if (url->Scheme == nullptr) return nullptr;

    bool ok = true;
    OwnedText userName(withUser ? encodePart(url->UserName, nullptr, &ok) : nullptr);
    OwnedText password(withUser && withPassword ? encodePart(url->Password, nullptr, &ok) : nullptr);
    OwnedText hostName(encodePart(url->HostName, nullptr, &ok));
    OwnedText path(encodePart(url->Path, PathExtraSafeWhenPrinting, &ok));
    OwnedText query(withQuery ? encodePart(url->Query, QueryExtraSafe, &ok) : nullptr);
    OwnedText reference(withReference ? encodePart(url->Reference, nullptr, &ok) : nullptr);
    if (!ok) return nullptr;

    char portText[16] = "";
    if (withPort && url->Port != nullptr) snprintf(portText, sizeof(portText), ":%d", static_cast<int>(*url->Port));

    // A leading slash of the path would read back as part of the separator behind the host, so
    // it is written in its encoded form.
    const char *pathText = path.Get() != nullptr ? path.Get() : "";
    bool pathIsAbsolute = pathText[0] == '/';
    if (pathIsAbsolute) ++pathText;

    auto lengthOf = [](const char *text) { return text != nullptr ? strlen(text) : 0; };
    size_t length = strlen(url->Scheme) + 3;
    if (userName.Get() != nullptr) {
        length += strlen(userName.Get()) + 1;
        if (password.Get() != nullptr) length += 1 + strlen(password.Get());
    }
    length += lengthOf(hostName.Get()) + strlen(portText) + 1;
    length += (pathIsAbsolute ? 3 : 0) + strlen(pathText);
    if (query.Get() != nullptr) length += 1 + strlen(query.Get());
    if (reference.Get() != nullptr) length += 1 + strlen(reference.Get());

    auto *buffer = static_cast<char *>(newmalloc(length + 1));
    if (buffer == nullptr) return nullptr;
    TextBuilder text(buffer);
    text.Append(url->Scheme);
    text.Append("://");
    if (userName.Get() != nullptr) {
        text.Append(userName.Get());
        if (password.Get() != nullptr) {
            text.Append(":");
            text.Append(password.Get());
        }
        text.Append("@");
    }
    if (hostName.Get() != nullptr) text.Append(hostName.Get());
    text.Append(portText);
    text.Append("/");
    if (pathIsAbsolute) text.Append("%2f");
    text.Append(pathText);
    if (query.Get() != nullptr) {
        text.Append("?");
        text.Append(query.Get());
    }
    if (reference.Get() != nullptr) {
        text.Append("#");
        text.Append(reference.Get());
    }
    CHECK(text.Used() == length);
    return buffer;
}

char *URLEncodeString(const char *text, size_t length, const char *extraSafe) {
    REQUIRE((text != nullptr || length == 0));
    REQUIRE(length <= (static_cast<size_t>(-1) - 1) / 3);
    static const char hexDigits[] = "0123456789abcdef";
    auto *encoded = static_cast<char *>(newmalloc(3 * length + 1));
    if (encoded == nullptr) return nullptr;
    size_t used = 0;
    for (size_t i = 0; i < length; ++i) {
        auto c = static_cast<unsigned char>(text[i]);
        if (isSafeChar(c)) {
            encoded[used++] = static_cast<char>(c);
        } else if (isExtraSafeChar(c, extraSafe)) {
            encoded[used++] = c == ' ' ? '+' : static_cast<char>(c);
        } else {
            encoded[used++] = '%';
            encoded[used++] = hexDigits[c >> 4];
            encoded[used++] = hexDigits[c & 0xf];
        }
    }
    encoded[used] = '\0';
    return encoded;
}

char *URLDecodeString(const char *text, size_t length) {
    REQUIRE((text != nullptr || length == 0));
    // Decoding never lengthens a text, so the input length bounds the output.
    OwnedText decoded(static_cast<char *>(newmalloc(length + 1)));
    if (decoded.Get() == nullptr) return nullptr;
    char *out = decoded.Get();
    for (size_t i = 0; i < length; ++i) {
        char c = text[i];
        if (c == '+') {
            c = ' ';
        } else if (c == '%') {
            if (length - i < 3) return nullptr;
            int high = hexValue(static_cast<unsigned char>(text[i + 1]));
            int low = hexValue(static_cast<unsigned char>(text[i + 2]));
            if (high < 0 || low < 0) return nullptr;
            c = static_cast<char>(high * 16 + low);
            i += 2;
        }
        // A zero byte would silently cut the text short, hiding whatever followed it.
        if (c == '\0') return nullptr;
        *out++ = c;
    }
    *out = '\0';
    return decoded.Release();
}

bool URLEncodingIsValid(const char *text, size_t length, const char *extraSafe) {
    REQUIRE((text != nullptr || length == 0));
    for (size_t i = 0; i < length; ++i) {
        auto c = static_cast<unsigned char>(text[i]);
        if (isSafeChar(c) || isExtraSafeChar(c, extraSafe)) continue;
        if (c != '%' || length - i < 3) return false;
        if (hexValue(static_cast<unsigned char>(text[i + 1])) < 0 ||
            hexValue(static_cast<unsigned char>(text[i + 2])) < 0) {
            return false;
        }
        i += 2;
    }
    return true;
}
