// Changes to inputs that are tagged records: the parts stay readable, so that what harms is not hidden behind what is
// refused at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

/// Makes one changed input of one or two. The same numbers give the same change on every system.
class CRecordMutator {
public:
    explicit CRecordMutator(unsigned seed) : mRandom(seed) {}

    /// Changes a key, a size, a count, an index, a number, a text or a version; or takes out, doubles, swaps or copies
    /// records, components and elements, mostly with the counts put right.
    /// @return the changed input; the same bytes when there are no records
    std::string Mutate(std::string_view bytes);
    /// Puts records, a component or elements of the second input into the first.
    std::string CrossOver(std::string_view first, std::string_view second);

private:
    /// A header of 8 bytes, a record, or at the end what is neither.
    struct tPiece {
        enum class eKind { kHeader, kRecord, kRest };
        eKind kind;
        int key;
        std::string bytes; ///< with header
    };
    using tPieces = std::vector<tPiece>;
    /// Pieces from `begin` up to, not including, `end`.
    struct tRange {
        size_t begin;
        size_t end;
    };

    static tPieces Split(std::string_view bytes);
    static std::string Join(const tPieces& pieces);
    static void PutCountsRight(tPieces& pieces);
    /// A piece, some that follow each other, a component or an element.
    tRange ChooseRange(const tPieces& pieces);
    void ChangePiece(tPiece& piece, const tPieces& pieces);
    void ChangeData(tPiece& piece, const tPieces& pieces);
    void ChangeText(std::string& text);
    /// Puts a number at the edge of what there is at a place of the data.
    void PutEdge(std::string& data);

    size_t Below(size_t limit) { return mRandom() % limit; }
    bool OneIn(size_t count) { return Below(count) == 0; }

    std::minstd_rand mRandom;
};
