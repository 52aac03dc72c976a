// The list of strings: an ArrayList_s of type CharPtr behind an opaque name. The list owns its
// entries; the item destructor frees them whenever an entry is replaced, removed or the list goes.
// Relies on: arrlist, strutil, alloc.
#include "base/kernel/strlist.h"

#include <cstring>
#include <string>

#include "base/kernel/alloc.h"
#include "base/kernel/arrlist.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/strutil.h"

namespace {

// A StringList_s is never defined: its pointer is the pointer to the underlying array list.
inline ArrayList_s *asArrayList(StringList_s *list) { return reinterpret_cast<ArrayList_s *>(list); }
inline const ArrayList_s *asArrayList(const StringList_s *list) { return reinterpret_cast<const ArrayList_s *>(list); }
inline StringList_s *asStringList(ArrayList_s *list) { return reinterpret_cast<StringList_s *>(list); }

bool stringItemDestructor(void *itemRef, ArbParam_t /*clientData*/) {
    char **entry = static_cast<char **>(itemRef);
    newfree(*entry);
    *entry = nullptr;
    return true;
}

inline ArrayListItem_u stringItem(char *s) {
    ArrayListItem_u item;
    item.CharPtr = s;
    return item;
}

inline bool isValidList(const StringList_s *list) {
    return ArrayListIsValid(asArrayList(list)) && asArrayList(list)->type == ArrayListType_CharPtr;
}

struct SortContext {
    StringListStringComparator_pf comparator;
    ArbParam_t clientData;
};

int compareEntries(ArrayListItem_u item1, ArrayListItem_u item2, ArbParam_t clientData) {
    const auto *context = reinterpret_cast<const SortContext *>(clientData);
    if (context->comparator != nullptr) return context->comparator(item1.CharPtr, item2.CharPtr, context->clientData);
    if (item1.CharPtr == nullptr || item2.CharPtr == nullptr) return (item1.CharPtr != nullptr) - (item2.CharPtr != nullptr);
    return strcmp(item1.CharPtr, item2.CharPtr);
}

// Ends a group and starts the next: the group's lines become one entry.
bool appendGroup(StringList_s *list, std::string *group) {
    bool isOk = StringListAppendString(list, group->c_str());
    group->clear();
    return isOk;
}

inline bool isCompoundSeparator(char c) { return c == ' ' || c == '\t' || c == '\n' || c == ','; }
inline bool isCompoundJoin(char c) { return c == '+' || c == ';'; }

}  // namespace

StringList_s *StringListAlloc() { return asStringList(ArrayListAlloc(0, ArrayListType_CharPtr, nullptr, 0)); }

void StringListDealloc(StringList_s **list) {
    REQUIRE(list != nullptr);
    ArrayList_s *items = asArrayList(*list);
    ArrayListDealloc(&items, stringItemDestructor, 0);
    *list = nullptr;
}

void StringListClear(StringList_s *list) {
    REQUIRE(isValidList(list));
    ArrayListDeleteAllItems(asArrayList(list), stringItemDestructor, 0);
}

bool StringListAppendString(StringList_s *list, const char *s) {
    REQUIRE(isValidList(list));
    return StringListSetString(list, StringListCount(list), s);
}

LgIndex_t StringListCount(const StringList_s *list) {
    REQUIRE(isValidList(list));
    return asArrayList(list)->count;
}

char *StringListGetString(const StringList_s *list, LgIndex_t index) {
    return DupString(StringListGetStringRef(list, index));
}

const char *StringListGetStringRef(const StringList_s *list, LgIndex_t index) {
    REQUIRE(isValidList(list) && index >= 0 && index < StringListCount(list));
    return ArrayListGetItem(asArrayList(list), index).CharPtr;
}

bool StringListSetString(StringList_s *list, LgIndex_t index, const char *s) {
    REQUIRE(isValidList(list) && index >= 0);
    char *copy = DupString(s);
    if (s != nullptr && copy == nullptr) return false;
    if (!ArrayListSetItem(asArrayList(list), index, stringItem(copy), stringItemDestructor, 0)) {
        newfree(copy);
        return false;
    }
    return true;
}

bool StringListInsertString(StringList_s *list, LgIndex_t index, const char *s) {
    REQUIRE(isValidList(list) && index >= 0);
    char *copy = DupString(s);
    if (s != nullptr && copy == nullptr) return false;
    if (!ArrayListInsertItem(asArrayList(list), index, stringItem(copy))) {
        newfree(copy);
        return false;
    }
    return true;
}

void StringListRemoveString(StringList_s *list, LgIndex_t index) {
    REQUIRE(isValidList(list) && index >= 0 && index < StringListCount(list));
    ArrayListDeleteItem(asArrayList(list), index, stringItemDestructor, 0);
}

StringList_s *StringListCopy(const StringList_s *list) {
    REQUIRE(isValidList(list));
    const ArrayList_s *items = asArrayList(list);
    // Built entry by entry rather than with a duplicator, so a failure frees what was copied.
    ArrayList_s *copy = ArrayListAlloc(items->count, ArrayListType_CharPtr, nullptr, 0);
    if (copy == nullptr) return nullptr;
    for (LgIndex_t i = 0; i < items->count; i++) {
        if (!StringListAppendString(asStringList(copy), StringListGetStringRef(list, i))) {
            ArrayListDealloc(&copy, stringItemDestructor, 0);
            return nullptr;
        }
    }
    return asStringList(copy);
}

bool StringListAppend(StringList_s *target, const StringList_s *source) {
    REQUIRE(isValidList(target) && isValidList(source));
    StringList_s *copy = StringListCopy(source);
    if (copy == nullptr) return false;
    ArrayList_s *copyItems = asArrayList(copy);
    bool isOk = ArrayListAppend(asArrayList(target), copyItems);
    // On success the target owns the copied strings now; on failure they go with the copy.
    ArrayListDealloc(&copyItems, isOk ? nullptr : stringItemDestructor, 0);
    return isOk;
}

char *StringListToNLString(const StringList_s *list) {
    REQUIRE(isValidList(list));
    LgIndex_t count = StringListCount(list);
    size_t length = 0;
    for (LgIndex_t i = 0; i < count; i++) {
        const char *entry = StringListGetStringRef(list, i);
        length += (entry != nullptr ? strlen(entry) : 0) + (i > 0 ? 1 : 0);
    }
    auto *joined = static_cast<char *>(newmalloc(length + 1));
    if (joined == nullptr) return nullptr;
    char *out = joined;
    for (LgIndex_t i = 0; i < count; i++) {
        if (i > 0) *out++ = '\n';
        const char *entry = StringListGetStringRef(list, i);
        if (entry != nullptr) {
            size_t entryLength = strlen(entry);
            memcpy(out, entry, entryLength);
            out += entryLength;
        }
    }
    *out = '\0';
    return joined;
}

StringList_s *StringListFromNLString(const char *s) {
    StringList_s *list = StringListAlloc();
    if (list == nullptr || s == nullptr) return list;
    const char *line = s;
    for (;;) {
        const char *end = strchr(line, '\n');
        size_t length = end != nullptr ? static_cast<size_t>(end - line) : strlen(line);
        char *entry = CopySubString(line, 0, static_cast<LgIndex_t>(length));
        bool isOk = entry != nullptr && ArrayListAppendItem(asArrayList(list), stringItem(entry));
        if (!isOk) {
            newfree(entry);
            StringListDealloc(&list);
            return nullptr;
        }
        if (end == nullptr) break;
        line = end + 1;
    }
    return list;
}

char **StringListToArray(const StringList_s *list) {
    REQUIRE(isValidList(list));
    LgIndex_t count = StringListCount(list);
    auto *array = static_cast<char **>(newmalloc(sizeof(char *) * static_cast<size_t>(count > 0 ? count : 1)));
    if (array == nullptr) return nullptr;
    for (LgIndex_t i = 0; i < count; i++) {
        const char *entry = StringListGetStringRef(list, i);
        array[i] = DupString(entry);
        if (entry != nullptr && array[i] == nullptr) {
            for (LgIndex_t j = 0; j < i; j++) newfree(array[j]);
            newfree(array);
            return nullptr;
        }
    }
    return array;
}

StringList_s *StringListFromArray(const char *const *array, LgIndex_t count) {
    REQUIRE(count >= 0 && (count == 0 || array != nullptr));
    StringList_s *list = StringListAlloc();
    if (list == nullptr) return nullptr;
    for (LgIndex_t i = 0; i < count; i++) {
        if (!StringListAppendString(list, array[i])) {
            StringListDealloc(&list);
            return nullptr;
        }
    }
    return list;
}

// Each entry becomes its lines in double quotes, joined by groupJoinChar; entries are separated by
// one blank, and a null or empty entry is "". Characters of charsToEscape get two backslashes in
// front; a double quote inside a line gets one.
char *StringListToCompound(const StringList_s *list, char groupJoinChar, const char *charsToEscape) {
    REQUIRE(isValidList(list));
    std::string compound;
    LgIndex_t count = StringListCount(list);
    for (LgIndex_t i = 0; i < count; i++) {
        if (i > 0) compound += ' ';
        const char *entry = StringListGetStringRef(list, i);
        if (entry == nullptr || *entry == '\0') {
            compound += "\"\"";
            continue;
        }
        compound += '"';
        for (const char *c = entry; *c != '\0'; c++) {
            if (*c == '\n') {
                compound += '"';
                compound += groupJoinChar;
                compound += '"';
                continue;
            }
            if (charsToEscape != nullptr && strchr(charsToEscape, *c) != nullptr) compound += "\\\\";
            if (*c == '"') compound += '\\';
            compound += *c;
        }
        compound += '"';
    }
    return DupString(compound.c_str());
}

// Items are separated by blanks, tabs, newlines or commas. An item is bare, ending at a separator,
// "+" or ";", or quoted in double or single quotes, inside which a backslash before that quote
// stands for the quote. Items joined by "+" or ";" form one entry, their texts joined by newlines.
StringList_s *StringListFromCompound(const char *s) {
    StringList_s *list = StringListAlloc();
    if (list == nullptr || s == nullptr) return list;
    std::string group;
    const char *p = s;
    bool isOk = true;
    while (isOk) {
        while (isCompoundSeparator(*p)) p++;
        if (*p == '\0') break;
        // One group: items for as long as a join character follows.
        for (;;) {
            if (*p == '"' || *p == '\'') {
                char quote = *p++;
                while (*p != quote) {
                    if (*p == '\0') {
                        StringListDealloc(&list);
                        return nullptr;
                    }
                    if (p[0] == '\\' && p[1] == quote) p++;
                    group += *p++;
                }
                p++;
            } else {
                while (*p != '\0' && !isCompoundSeparator(*p) && !isCompoundJoin(*p)) group += *p++;
            }
            if (!isCompoundJoin(*p)) break;
            group += '\n';
            p++;
        }
        isOk = appendGroup(list, &group);
    }
    if (!isOk) StringListDealloc(&list);
    return list;
}

void StringListSort(StringList_s *list, StringListStringComparator_pf comparator, ArbParam_t clientData) {
    REQUIRE(isValidList(list));
    SortContext context = {comparator, clientData};
    ArrayListSort(asArrayList(list), compareEntries, reinterpret_cast<ArbParam_t>(&context));
}
