// What is needed of articles, held against what is there.
#pragma once

#include <string>
#include <vector>

/// Balances of whole lists, for programs that have articles by their names only and not their libraries.
class UStockBalance {
public:
    UStockBalance() = delete;

    /// How many of an article. Names are of any form.
    struct tAmount {
        std::string library;
        std::string number;
        int count = 0; ///< not negative
    };
    using tAmounts = std::vector<tAmount>;

    /// @param needed     each article once
    /// @param owned      each article once
    /// @param required   receives for each that is needed how many the stock lacks
    /// @param remaining  receives for each that is owned how many are left when the needed ones are taken out
    static void Compare(const tAmounts& needed, const tAmounts& owned, std::vector<int>& required,
                        std::vector<int>& remaining);
};
