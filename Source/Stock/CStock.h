// What the user owns.
#pragma once

#include "Stock/CStockPlaces.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

class CCompositeGeometry;
class CCountedCIG;

/// The user's inventory of track parts: how many pieces of which library article. Owns one counted element for each
/// article, in the order of their keys (library name, "#", product number; byte by byte). Kept in an XML file, see
/// docs/formats/stock.md. Names are Mac OS Roman. Not for several threads.
class CStock {
public:
    using tElements = std::vector<CCountedCIG*>;

    /// The user's stock, made empty when it is first asked for; lives until the process ends.
    static CStock* Instance();

    CStock() = default;
    CStock(const CStock&) = delete;
    CStock& operator=(const CStock&) = delete;
    virtual ~CStock();

    /// Loads the stock file.
    /// @param fileName  becomes the stock file's name; null loads the file of the last name again. A relative name is
    ///                  one in the application's folder among the user's application data.
    /// @return as LoadFromFile; false without a name, which leaves the stock alone
    bool Load(const char* fileName);
    /// Replaces the stock by what a file holds; every article is looked up in its library, which CRailsetFolder must
    /// know. Articles of unknown libraries, of libraries that do not load, those that their library lacks, and those
    /// whose names are outside Mac OS Roman, are left out with a message. Counts of an article that comes several times
    /// add up.
    /// @param path  as for Platform::CInputFile
    /// @return false when the file cannot be read, is no stock file or holds nothing, and at the first entry that is no
    ///         proper one: those before it stay
    bool LoadFromFile(const char* path);
    /// What a file turned out to be.
    enum class eFileState {
        kWhole,
        kUnreadable, ///< missing, or the system fails to read it
        kNoStock,    ///< it is no stock file or holds nothing
        kBadEntry    ///< an entry lacks its product number or its library; those before it were handed over
    };
    /// An entry as it stands in a stock file. Names are UTF-8, so that those outside Mac OS Roman can be told from each
    /// other.
    struct tEntry {
        enum class eCount {
            kProper,  ///< a whole number from 0 to 2,147,483,647, maybe with blanks around it
            kMissing, ///< there is no such element
            kWrong    ///< anything else
        };
        std::string library;
        std::string productNumber;
        std::string countText; ///< as it stands there
        int count = 0;         ///< as LoadFromFile takes it: a number at the beginning, of either sign, or 0
        eCount state = eCount::kMissing;
        tStockPlace place;

        /// What a careful reader takes it for: 0 where it is no proper number.
        int GetProperCount() const { return state == eCount::kProper ? count : 0; }
    };
    /// Calls `use` for each entry of a stock file, whether or not its library is known. What is wrong is reported with
    /// a warning.
    using tUseEntry = std::function<void(const tEntry& entry)>;
    static eFileState ForEachEntry(const char* path, const tUseEntry& use);
    /// Writes the stock file. @return false without a name, and as SaveToFile
    bool Save();
    /// Takes over the name and saves.
    bool SaveAs(const char* fileName);
    /// Replaces a file by the stock. Entries without product number or library are left out with a warning.
    /// @return false when it was not written whole, or would be beyond what LoadFromFile reads (see UXMLFile); an old
    ///         file then stays
    bool SaveToFile(const char* path) const;

    /// A new entry, which the caller owns, for an article of a library, which is read from disk for it.
    /// @return null for an unknown library, one that does not load, or one without the article
    CCountedCIG* CreateCountedCIG(const char* libraryName, const char* productNumber, int count) const;
    /// Adds an entry. @return 1 when the stock owns it from then on; 0 when there was one of its key, which its count
    /// was added to: the entry stays the caller's then
    int AddElement(CCountedCIG* element);
    /// @return the entry of that key, or null
    CCountedCIG* FindElement(const char* libraryName, const char* productNumber) const;
    /// Takes the entry with that element's key out; the caller, who knows it from FindElement, owns it then.
    void RemoveElement(const CCompositeGeometry* element);
    /// Takes out every entry with a count below 1. They are not destroyed: the caller has to get
    /// hold of them before. @return their number
    int RemoveZeroCountElements();
    /// Replaces `elements` by all entries, which stay the stock's, in the order of their keys. @return their number
    int GetElements(tElements& elements) const;
    int GetSumOfElementTypes() const { return static_cast<int>(mItems.size()); }
    /// Sum of all counts, clamped to 32 bits.
    int GetSumOfAllElements() const;
    /// Destroys every entry.
    void ClearStock();

private:
    static std::string KeyOf(std::string_view libraryName, std::string_view productNumber);
    static std::string KeyOf(const CCompositeGeometry* element);
    /// Makes the stock file's name an absolute path. Where there is no folder for it the name stays.
    void LocalFileToAbsolutePath();
    /// Adds what an entry of a stock file, with its names in UTF-8, stands for.
    void LoadItem(const std::string& library, const std::string& product, int count);

    std::string mFileName; ///< of the stock file
    std::map<std::string, CCountedCIG*> mItems;
};
