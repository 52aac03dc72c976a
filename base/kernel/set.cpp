// The bit set. Every operation works a 64-bit word at a time: walks use bit scans, counts use
// population counts, and renumbering shifts the word array instead of moving members one by one.
// Relies on: alloc, errors.
#include "base/kernel/set.h"

#include <algorithm>
#include <cstring>

#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/orvassert.h"

namespace {

constexpr SetIndex_t kBitsPerWord = 64;
// Far beyond any memory; keeps the doubling and the byte count of a set from overflowing.
constexpr SetIndex_t kMaxSetSize = SetIndex_t(1) << 56;

inline SetIndex_t wordCount(const Set_a *set) { return set->size / kBitsPerWord; }

inline uint64_t lowBits(int count) { return count >= 64 ? ~uint64_t(0) : ((uint64_t(1) << count) - 1); }

// The count bits (count <= 64) starting at bit pos of words, in the low end of the result; the
// bits above count are undefined. Reads the following word only when the bits reach into it.
inline uint64_t readBits(const uint64_t *words, SetIndex_t pos, int count) {
    SetIndex_t w = pos >> 6;
    int b = static_cast<int>(pos & 63);
    uint64_t value = words[w] >> b;
    if (b != 0 && count > 64 - b) value |= words[w + 1] << (64 - b);
    return value;
}

// Copies count bits from src at srcPos to dst at dstPos; the two arrays must not overlap.
void copyBits(uint64_t *dst, SetIndex_t dstPos, const uint64_t *src, SetIndex_t srcPos, SetIndex_t count) {
    while (count > 0) {
        SetIndex_t w = dstPos >> 6;
        int b = static_cast<int>(dstPos & 63);
        int chunk = static_cast<int>(std::min<SetIndex_t>(64 - b, count));
        uint64_t mask = lowBits(chunk) << b;
        uint64_t bits = readBits(src, srcPos, chunk) << b;
        dst[w] = (dst[w] & ~mask) | (bits & mask);
        dstPos += chunk;
        srcPos += chunk;
        count -= chunk;
    }
}

void reportOutOfMemory(bool showErr) {
    if (showErr) ErrMsg("Out of memory for sets");
}

}  // namespace

Set_a *AllocSet(bool showErr) {
    auto *set = static_cast<Set_a *>(newmalloc(sizeof(Set_a)));
    if (set != nullptr) {
        set->size = kBitsPerWord;
        set->data = static_cast<uint64_t *>(newmalloc(sizeof(uint64_t)));
        if (set->data == nullptr) {
            newfree(set);
            set = nullptr;
        } else {
            set->data[0] = 0;
        }
    }
    if (set == nullptr) reportOutOfMemory(showErr);
    return set;
}

void DeallocSet(Set_a **set) {
    REQUIRE(set != nullptr);
    if (*set == nullptr) return;
    newfree((*set)->data);
    newfree(*set);
    *set = nullptr;
}

bool SetItemDestructor(void *itemRef, ArbParam_t /*clientData*/) {
    REQUIRE(itemRef != nullptr);
    DeallocSet(static_cast<Set_a **>(itemRef));
    return true;
}

bool ExpandSet(Set_a *set, SetIndex_t max, bool showErr) {
    if (set == nullptr) {
        ErrMsg("Null Set expand");
        return false;
    }
    if (max <= set->size) return true;
    if (max > kMaxSetSize) {
        reportOutOfMemory(showErr);
        return false;
    }
    SetIndex_t newSize = std::max(set->size, kBitsPerWord);
    while (newSize < max) newSize *= 2;
    // The size is a multiple of 64 from the start and doubling keeps it one; the rounding only
    // matters for a set whose size someone built by hand.
    newSize = (newSize + kBitsPerWord - 1) / kBitsPerWord * kBitsPerWord;

    size_t oldWords = static_cast<size_t>(wordCount(set));
    size_t newWords = static_cast<size_t>(newSize / kBitsPerWord);
    auto *data = static_cast<uint64_t *>(newmalloc(newWords * sizeof(uint64_t)));
    if (data == nullptr) {
        reportOutOfMemory(showErr);
        return false;
    }
    memcpy(data, set->data, oldWords * sizeof(uint64_t));
    memset(data + oldWords, 0, (newWords - oldWords) * sizeof(uint64_t));
    newfree(set->data);
    set->data = data;
    set->size = newSize;
    return true;
}

bool CopySet(Set_a *dest, const Set_a *src, bool showErr) {
    REQUIRE(dest != nullptr && src != nullptr);
    if (dest == src) return true;
    if (!ExpandSet(dest, src->size, showErr)) return false;
    SetIndex_t srcWords = wordCount(src);
    memcpy(dest->data, src->data, static_cast<size_t>(srcWords) * sizeof(uint64_t));
    memset(dest->data + srcWords, 0, static_cast<size_t>(wordCount(dest) - srcWords) * sizeof(uint64_t));
    return true;
}

bool AppendSet(Set_a *dest, const Set_a *src, bool showErr) {
    REQUIRE(dest != nullptr && src != nullptr);
    SetIndex_t highest = GetPrevMember(src, -1);
    if (highest < 0) return true;
    // Grow only as far as the highest member needs, as adding the members singly would.
    if (!ExpandSet(dest, highest + 1, showErr)) return false;
    SetIndex_t words = highest / kBitsPerWord + 1;
    for (SetIndex_t w = 0; w < words; w++) dest->data[w] |= src->data[w];
    return true;
}

void ClearSet(Set_a *set) {
    if (set == nullptr || set->data == nullptr) return;
    memset(set->data, 0, static_cast<size_t>(wordCount(set)) * sizeof(uint64_t));
}

bool AddToSet(Set_a *set, SetIndex_t member, bool showErr) {
    REQUIRE(set != nullptr && member >= 0);
    if (member >= set->size && !ExpandSet(set, member + 1, showErr)) return false;
    set->data[member >> 6] |= uint64_t(1) << (member & 63);
    return true;
}

bool AddRangeToSet(Set_a *set, SetIndex_t first, SetIndex_t last, bool showErr) {
    REQUIRE(set != nullptr && first >= 0);
    if (last < first) return true;
    if (last >= set->size && !ExpandSet(set, last + 1, showErr)) return false;
    SetIndex_t firstWord = first >> 6, lastWord = last >> 6;
    uint64_t firstMask = ~lowBits(static_cast<int>(first & 63));  // bits first.. of its word
    uint64_t lastMask = lowBits(static_cast<int>(last & 63) + 1);  // bits ..last of its word
    if (firstWord == lastWord) {
        set->data[firstWord] |= firstMask & lastMask;
        return true;
    }
    set->data[firstWord] |= firstMask;
    for (SetIndex_t w = firstWord + 1; w < lastWord; w++) set->data[w] = ~uint64_t(0);
    set->data[lastWord] |= lastMask;
    return true;
}

void RemoveFromSet(Set_a *set, SetIndex_t member) {
    REQUIRE(set != nullptr);
    if (static_cast<uint64_t>(member) >= static_cast<uint64_t>(set->size)) return;
    set->data[member >> 6] &= ~(uint64_t(1) << (member & 63));
}

void DeleteSetMember(Set_a *set, SetIndex_t member) {
    REQUIRE(set != nullptr && member >= 0);
    if (member >= set->size) return;
    SetIndex_t words = wordCount(set);
    SetIndex_t w = member >> 6;
    uint64_t keep = lowBits(static_cast<int>(member & 63));  // the bits below member stay put
    // Everything from member up moves down one bit; each word takes bit 0 of the next into bit 63,
    // and the top bit of the set becomes 0.
    uint64_t next = (w + 1 < words) ? set->data[w + 1] : 0;
    set->data[w] = (set->data[w] & keep) | ((set->data[w] >> 1) & ~keep) | (next << 63);
    for (SetIndex_t k = w + 1; k < words; k++) {
        next = (k + 1 < words) ? set->data[k + 1] : 0;
        set->data[k] = (set->data[k] >> 1) | (next << 63);
    }
}

bool InsertSetMember(Set_a *set, SetIndex_t member, bool showErr) {
    REQUIRE(set != nullptr && member >= 0);
    SetIndex_t highest = GetPrevMember(set, -1);
    SetIndex_t needed = member + 1;
    if (highest >= member) needed = std::max(needed, highest + 2);
    if (!ExpandSet(set, needed, showErr)) return false;
    // After the expansion the top bit is clear, so nothing is lost off the end. Words are shifted
    // from the top down so each still holds its old bit 63 when the word above reads it.
    SetIndex_t words = wordCount(set);
    SetIndex_t w = member >> 6;
    for (SetIndex_t k = words - 1; k > w; k--) set->data[k] = (set->data[k] << 1) | (set->data[k - 1] >> 63);
    uint64_t keep = lowBits(static_cast<int>(member & 63));
    set->data[w] = (set->data[w] & keep) | ((set->data[w] & ~keep) << 1);
    set->data[w] |= uint64_t(1) << (member & 63);
    return true;
}

bool IsEmpty(const Set_a *set) {
    if (set == nullptr || set->data == nullptr) return true;
    SetIndex_t words = wordCount(set);
    for (SetIndex_t w = 0; w < words; w++) {
        if (set->data[w] != 0) return false;
    }
    return true;
}

bool HasVoids(const Set_a *set) {
    SetIndex_t highest = GetPrevMember(set, -1);
    if (highest < 0) return false;
    return MemberCount(set) != highest + 1;
}

SetIndex_t MemberCount(const Set_a *set) {
    if (set == nullptr || set->data == nullptr) return 0;
    SetIndex_t count = 0;
    SetIndex_t words = wordCount(set);
    for (SetIndex_t w = 0; w < words; w++) count += __builtin_popcountll(set->data[w]);
    return count;
}

SetIndex_t GetNextMember(const Set_a *set, SetIndex_t prev) {
    if (set == nullptr || set->data == nullptr) return BADSETVALUE;
    REQUIRE(prev >= -1);
    SetIndex_t start = prev + 1;
    if (start >= set->size) return BADSETVALUE;
    SetIndex_t w = start >> 6;
    uint64_t bits = set->data[w] >> (start & 63);
    if (bits != 0) return start + __builtin_ctzll(bits);
    SetIndex_t words = wordCount(set);
    for (w++; w < words; w++) {
        if (set->data[w] != 0) return w * kBitsPerWord + __builtin_ctzll(set->data[w]);
    }
    return BADSETVALUE;
}

SetIndex_t GetPrevMember(const Set_a *set, SetIndex_t next) {
    if (set == nullptr || set->data == nullptr) return BADSETVALUE;
    REQUIRE(next >= -1);
    if (next == 0) return BADSETVALUE;
    SetIndex_t start = (next == -1 || next > set->size) ? set->size - 1 : next - 1;
    SetIndex_t w = start >> 6;
    uint64_t bits = set->data[w] & lowBits(static_cast<int>(start & 63) + 1);
    for (;;) {
        if (bits != 0) return w * kBitsPerWord + 63 - __builtin_clzll(bits);
        if (w == 0) return BADSETVALUE;
        bits = set->data[--w];
    }
}

bool EqualSets(const Set_a *set1, const Set_a *set2) {
    SetIndex_t words1 = (set1 != nullptr && set1->data != nullptr) ? wordCount(set1) : 0;
    SetIndex_t words2 = (set2 != nullptr && set2->data != nullptr) ? wordCount(set2) : 0;
    SetIndex_t common = std::min(words1, words2);
    if (common > 0 && memcmp(set1->data, set2->data, static_cast<size_t>(common) * sizeof(uint64_t)) != 0) return false;
    // The longer set's remaining words must be empty.
    const Set_a *longer = words1 > words2 ? set1 : set2;
    SetIndex_t longerWords = std::max(words1, words2);
    for (SetIndex_t w = common; w < longerWords; w++) {
        if (longer->data[w] != 0) return false;
    }
    return true;
}

bool IsSubSet(const Set_a *childSet, const Set_a *parentSet) {
    if (childSet == nullptr || childSet->data == nullptr) return true;
    SetIndex_t childWords = wordCount(childSet);
    SetIndex_t parentWords = (parentSet != nullptr && parentSet->data != nullptr) ? wordCount(parentSet) : 0;
    for (SetIndex_t w = 0; w < childWords; w++) {
        uint64_t parentBits = w < parentWords ? parentSet->data[w] : 0;
        if ((childSet->data[w] & ~parentBits) != 0) return false;
    }
    return true;
}

SetIndex_t MemberOffset(const Set_a *set, SetIndex_t member) {
    if (set == nullptr || set->data == nullptr || !InSet(set, member)) return -1;
    SetIndex_t w = member >> 6;
    SetIndex_t offset = 0;
    for (SetIndex_t k = 0; k < w; k++) offset += __builtin_popcountll(set->data[k]);
    return offset + __builtin_popcountll(set->data[w] & lowBits(static_cast<int>(member & 63)));
}

SetIndex_t OffsetMember(const Set_a *set, SetIndex_t offset) {
    if (set == nullptr || set->data == nullptr || offset < 0) return BADSETVALUE;
    SetIndex_t words = wordCount(set);
    SetIndex_t remaining = offset;
    for (SetIndex_t w = 0; w < words; w++) {
        uint64_t bits = set->data[w];
        SetIndex_t inWord = __builtin_popcountll(bits);
        if (remaining < inWord) {
            // Drop the lowest members of this word until the wanted one is the lowest.
            for (; remaining > 0; remaining--) bits &= bits - 1;
            return w * kBitsPerWord + __builtin_ctzll(bits);
        }
        remaining -= inWord;
    }
    return BADSETVALUE;
}

bool CopySetMember(Set_a *dest, SetIndex_t destMember, const Set_a *src, SetIndex_t srcMember) {
    REQUIRE(dest != nullptr && src != nullptr && destMember >= 0);
    if (InSet(src, srcMember)) return AddToSet(dest, destMember, false);
    RemoveFromSet(dest, destMember);
    return true;
}

bool ShiftSet(Set_a *set, SetIndex_t first, SetIndex_t last, SetIndex_t shift) {
    REQUIRE(set != nullptr && first >= 0 && first <= last && first + shift >= 0);
    if (shift == 0 || IsEmpty(set)) return true;
    SetIndex_t low = std::min(first, first + shift);
    SetIndex_t high = std::max(last, last + shift);
    // A stretch that lies wholly above the highest member holds only zeros: rotating it is a no-op.
    if (low > GetPrevMember(set, -1)) return true;
    if (high >= set->size && !ExpandSet(set, high + 1, false)) return false;

    SetIndex_t length = high - low + 1;
    // Rotating the stretch toward higher bits by 'rotation' moves first..last by shift.
    SetIndex_t rotation = shift > 0 ? shift : length + shift;
    size_t tempWords = static_cast<size_t>((length + kBitsPerWord - 1) / kBitsPerWord);
    auto *temp = static_cast<uint64_t *>(newmalloc(tempWords * sizeof(uint64_t)));
    if (temp == nullptr) return false;
    memset(temp, 0, tempWords * sizeof(uint64_t));
    copyBits(temp, 0, set->data, low, length);
    copyBits(set->data, low + rotation, temp, 0, length - rotation);
    copyBits(set->data, low, temp, length - rotation, rotation);
    newfree(temp);
    return true;
}
