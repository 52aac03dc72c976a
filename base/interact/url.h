// The URL record: a URL text parsed into its decoded parts, the checks of a record, the record
// printed back as text, and the percent-encoding that parsing and printing share.
//
// Three schemes are understood:
//   ftp://[user[:password]@]host[:port][/path][#reference]
//   http://host[:port][/path[?query]][#reference]
//   file://[host]/path[#reference]
// Every string in a record and every string handed out here is made by newmalloc and is freed by
// its receiver with newfree. A function that can only fail for want of memory returns null or
// false then, and leaves its record as it was.
#pragma once

#include <cstddef>
#include <cstdint>

// Each field is an owned string or null. Texts are stored decoded; the scheme is in lower case;
// the path is without the slash that separates it from the host.
struct URL_s {
    char *Scheme;     // "ftp", "http" or "file"
    char *UserName;
    char *Password;
    char *HostName;
    int32_t *Port;    // null when the URL names none
    char *Path;
    char *Query;
    char *Reference;  // the part behind "#"
};

// Parses the text; null for a null, empty or unparsable text (or when memory runs out).
URL_s *URLAlloc(const char *text);
// Frees the record and all its parts and nulls the pointer; a null record is allowed.
void URLDealloc(URL_s **url);
// A deep copy, or null for a null record.
URL_s *URLCopy(const URL_s *url);

// Replaces the whole record by the parse of the text. False, with the record unchanged, when the
// text does not parse.
bool URLSet(URL_s *url, const char *text);
// Replaces every part by a copy of the given decoded text (null for none). The scheme is stored in
// lower case. Nothing is checked here; URLIsValid judges the result.
bool URLSetParts(URL_s *url,
                 const char *scheme,
                 const char *userName,
                 const char *password,
                 const char *hostName,
                 const int32_t *port,
                 const char *path,
                 const char *query,
                 const char *reference);
bool URLSetUserNameAndPassword(URL_s *url, const char *userName, const char *password);
// A null port removes the port.
bool URLSetPort(URL_s *url, const int32_t *port);
bool URLSetReference(URL_s *url, const char *reference);

// Each gives a copy of the decoded part that the caller frees, or null when the part is absent.
char *URLGetScheme(const URL_s *url);
char *URLGetUserName(const URL_s *url);
char *URLGetPassword(const URL_s *url);
char *URLGetHostName(const URL_s *url);
// True, with the number in *port, when the record has a port.
bool URLGetPort(const URL_s *url, int32_t *port);
char *URLGetPath(const URL_s *url);
char *URLGetQuery(const URL_s *url);
char *URLGetReference(const URL_s *url);

// A cheap test without a parse: the name's first "/" stands right behind a ":" that is at
// position 2 or later (counted from 0), so a drive letter such as "x:/tmp/a" is no URL attempt.
bool URLNameIsProbableAttempt(const char *name);
// True when URLAlloc accepts the name.
bool URLNameIsValidSyntax(const char *name);
// The rules a usable record keeps: a non-empty scheme; a user name, if given, non-empty; a
// password only with a non-empty user name, and non-empty; a host except for "file", non-empty if
// given; a port not negative; a path except for "file", non-empty if given; query and reference
// non-empty if given. False for a null record.
bool URLIsValid(const URL_s *url);
// True when both name the same remote file: the same record, or scheme, user name, host name,
// path, query and reference equal without regard to case (null only equals null), and equal
// ports, where a missing port counts as 80 for "http", 21 for "ftp" and 0 otherwise. The password
// plays no part.
bool URLIsSameAddress(const URL_s *a, const URL_s *b);

// The URL as text, with the chosen optional parts, every part encoded; null for a record without
// a scheme or when memory runs out. An encoded path that would begin with "/" has that slash
// written "%2f", so an absolute ftp path comes out as "ftp://host/%2fdir/file".
char *URLGetEncodedName(const URL_s *url,
                        bool withUser,
                        bool withPassword,
                        bool withPort,
                        bool withQuery,
                        bool withReference);

// The safe set is the ASCII letters and digits and & ~ $ - _ . + ! * ' ( ) ,
// URLEncodeString copies the first `length` bytes of the text, keeping safe characters and those
// in extraSafe (null for none; a blank in it is written "+"), and writing every other byte as "%"
// and two lower-case hexadecimal digits. The result is at most three times the input long.
char *URLEncodeString(const char *text, size_t length, const char *extraSafe);
// Decodes the first `length` bytes: "+" becomes a blank, "%" and two hexadecimal digits the byte
// they name. Null when a "%" lacks two hexadecimal digits behind it, or when the result would hold
// a zero byte (which a C string cannot carry).
char *URLDecodeString(const char *text, size_t length);
// True when each of the first `length` bytes is safe, or in extraSafe, or a "%" followed by two
// hexadecimal digits. An empty text is valid.
bool URLEncodingIsValid(const char *text, size_t length, const char *extraSafe);
