// The list of parts as a workbook for spreadsheets.
#include "commands/Parts.h"
#include "input/DocumentNames.h"
#include "protocol/NamelessFile.h"
#include "protocol/UTF8.h"

#include <xlsxwriter.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <dlfcn.h>
#include <numeric>
#include <type_traits>
#include <unistd.h>

namespace {
/// Rows that a sheet has for parts; the rest is for what stands below them.
constexpr size_t kMostRows = LXW_ROW_MAX - 10000;
/// Bytes of a text, which may have 32,767 characters.
constexpr size_t kMostTextBytes = 32000;
/// Characters of a sheet's name, and those that may not be in it.
constexpr size_t kMostNameCharacters = 28;
constexpr char kNotInNames[] = "[]:*?/\\'";

/// Text that fits into a cell. It is never a formula, whatever it begins with.
std::string Fitting(const std::string& text)
{
    std::string valid = UTF8::MakeValid(text);
    if (valid.size() > kMostTextBytes) {
        size_t length = kMostTextBytes;
        while (length > 0 && (static_cast<unsigned char>(valid[length]) & 0xC0) == 0x80) {
            --length;
        }
        valid.resize(length);
    }
    return valid;
}

/// @param place  in the order of the layouts, from 1
std::string SheetName(size_t place, const std::string& path)
{
    std::string name = std::to_string(place) + " " + UTF8::MakeValid(DocumentNames::NameOfFile(path));
    size_t characters = 0;
    size_t end = 0;
    for (; end < name.size(); ++end) {
        const auto byte = static_cast<unsigned char>(name[end]);
        characters += (byte & 0xC0) != 0x80 ? 1 : 0;
        if (characters > kMostNameCharacters) {
            break;
        }
        name[end] = byte < ' ' || strchr(kNotInNames, byte) != nullptr ? ' ' : name[end];
    }
    return name.substr(0, end);
}

/// What is used of the library. It is loaded when the first workbook is made: it brings others with it, and all
/// programs would take twice the time to start.
struct tWriter {
    decltype(&::workbook_new_opt) workbookNewOpt = nullptr;
    decltype(&::workbook_add_format) workbookAddFormat = nullptr;
    decltype(&::workbook_add_worksheet) workbookAddWorksheet = nullptr;
    decltype(&::workbook_close) workbookClose = nullptr;
    decltype(&::lxw_strerror) lxwStrerror = nullptr;
    decltype(&::format_set_bold) formatSetBold = nullptr;
    decltype(&::format_set_num_format) formatSetNumFormat = nullptr;
    decltype(&::worksheet_set_paper) worksheetSetPaper = nullptr;
    decltype(&::worksheet_set_landscape) worksheetSetLandscape = nullptr;
    decltype(&::worksheet_fit_to_pages) worksheetFitToPages = nullptr;
    decltype(&::worksheet_repeat_rows) worksheetRepeatRows = nullptr;
    decltype(&::worksheet_freeze_panes) worksheetFreezePanes = nullptr;
    decltype(&::worksheet_set_column) worksheetSetColumn = nullptr;
    decltype(&::worksheet_write_string) worksheetWriteString = nullptr;
    decltype(&::worksheet_write_number) worksheetWriteNumber = nullptr;
    decltype(&::worksheet_write_formula_num) worksheetWriteFormulaNum = nullptr;

    /// @return empty, or why it cannot be loaded
    std::string Load()
    {
        void* const library = dlopen(VELMORA_XLSXWRITER, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        const auto find = [library](auto& function, const char* name) {
            function =
                library != nullptr ? reinterpret_cast<std::decay_t<decltype(function)>>(dlsym(library, name)) : nullptr;
            return function != nullptr;
        };
        const bool hasAll =
            find(workbookNewOpt, "workbook_new_opt") && find(workbookAddFormat, "workbook_add_format") &&
            find(workbookAddWorksheet, "workbook_add_worksheet") && find(workbookClose, "workbook_close") &&
            find(lxwStrerror, "lxw_strerror") && find(formatSetBold, "format_set_bold") &&
            find(formatSetNumFormat, "format_set_num_format") && find(worksheetSetPaper, "worksheet_set_paper") &&
            find(worksheetSetLandscape, "worksheet_set_landscape") &&
            find(worksheetFitToPages, "worksheet_fit_to_pages") && find(worksheetRepeatRows, "worksheet_repeat_rows") &&
            find(worksheetFreezePanes, "worksheet_freeze_panes") && find(worksheetSetColumn, "worksheet_set_column") &&
            find(worksheetWriteString, "worksheet_write_string") &&
            find(worksheetWriteNumber, "worksheet_write_number") &&
            find(worksheetWriteFormulaNum, "worksheet_write_formula_num");
        return hasAll ? std::string() : "the library " VELMORA_XLSXWRITER " is missing (package libxlsxwriter4)";
    }
};

class CWorkbook {
public:
    CWorkbook(const tWriter& writer, const tPartsReport& report, const char* path) : mWriter(writer), mReport(report)
    {
        lxw_workbook_options options = {};
        options.constant_memory = LXW_TRUE; // rows are written as they come
        mWorkbook = mWriter.workbookNewOpt(path, &options);
        if (mWorkbook != nullptr) {
            mBold = mWriter.workbookAddFormat(mWorkbook);
            mWriter.formatSetBold(mBold);
        }
    }

    void Add(const std::string& name, const tPartsList& list)
    {
        mSheet = mWriter.workbookAddWorksheet(mWorkbook, name.c_str());
        mFailed = mFailed || mSheet == nullptr;
        if (mFailed) {
            return;
        }
        mWriter.worksheetSetPaper(mSheet, 9); // A4
        mWriter.worksheetSetLandscape(mSheet);
        mWriter.worksheetFitToPages(mSheet, 1, 0);
        mWriter.worksheetRepeatRows(mSheet, 0, 0);
        mWriter.worksheetFreezePanes(mSheet, 1, 0);
        mRow = 0;
        AddTitles();
        for (const tPartsGroup& group : Parts::GetGroups(mReport, list)) {
            const lxw_row_t first = mRow;
            for (const tParts::value_type* entry : group.parts) {
                AddPart(group, *entry);
            }
            if (mReport.grouping != eGrouping::kNone) {
                AddSums(Parts::GetHeading(mReport, group), first, group.parts);
            }
        }
        std::vector<const tParts::value_type*> all;
        for (const tPartsGroup& group : Parts::GetGroups(mReport, list)) {
            all.insert(all.end(), group.parts.begin(), group.parts.end());
        }
        AddSums("Total", 1, all);
        for (const std::string& line : Parts::DescribeContents(list)) {
            Write(kLibrary, line);
            ++mRow;
        }
    }

    std::string Close()
    {
        const lxw_error error = mWriter.workbookClose(mWorkbook); // which releases it
        return error != LXW_NO_ERROR ? mWriter.lxwStrerror(error)
               : mFailed             ? "the list has more rows than a sheet"
                                     : std::string();
    }
    bool IsOpen() const { return mWorkbook != nullptr; }

private:
    enum eColumn : lxw_col_t {
        kGroup,
        kLibrary,
        kNumber,
        kDescription,
        kManufacturer,
        kLengths,
        kLength,
        kCount,
        kPrice,
        kSum,
        kCurrency,
        kInStock,
        kToBuy,
        kCosts,
        kRemarks
    };

    void Write(lxw_col_t column, const std::string& text, lxw_format* format = nullptr)
    {
        if (!text.empty()) {
            Check(mWriter.worksheetWriteString(mSheet, mRow, column, Fitting(text).c_str(), format));
        }
    }
    void WriteNumber(lxw_col_t column, double number, lxw_format* format = nullptr)
    {
        Check(mWriter.worksheetWriteNumber(mSheet, mRow, column, number, format));
    }
    void WriteFormula(lxw_col_t column, const std::string& formula, double value, lxw_format* format)
    {
        Check(mWriter.worksheetWriteFormulaNum(mSheet, mRow, column, formula.c_str(), format, value));
    }
    void Check(lxw_error error) { mFailed = mFailed || error != LXW_NO_ERROR; }

    void AddTitles()
    {
        static constexpr std::pair<const char*, double> kTitles[] = {
            {"", 12},        {"Library", 24}, {"Number", 12}, {"Description", 28}, {"Manufacturer", 18},
            {"Lengths", 20}, {"Length", 10},  {"Count", 8},   {"Price", 12},       {"Sum", 12},
            {"Currency", 9}, {"In stock", 8}, {"To buy", 8},  {"Costs", 12},       {"Remarks", 24}};
        for (lxw_col_t column = 0; column <= kRemarks; ++column) {
            const bool isShown = Shows(column);
            mWriter.worksheetSetColumn(mSheet, column, column, isShown ? kTitles[column].second : 0, nullptr);
            const bool isGroup = column == kGroup && isShown;
            Write(column, isGroup ? "Layer" : isShown ? kTitles[column].first : "", mBold);
        }
        ++mRow;
    }
    bool Shows(lxw_col_t column) const
    {
        const bool isOfStock = column == kInStock || column == kToBuy || column == kCosts;
        return column == kGroup ? mReport.grouping == eGrouping::kLayer : !isOfStock || mReport.hasStock;
    }

    /// Of a currency's amounts: its decimals and its symbol.
    lxw_format* FormatOf(long long number)
    {
        const auto [entry, isNew] = mFormats.try_emplace(number, nullptr);
        const tCurrency* const currency = mReport.currencies.Find(number);
        if (isNew && currency != nullptr) {
            std::string symbol = currency->symbol;
            std::erase(symbol, '"');
            const std::string decimals = currency->decimals > 0 ? "." + std::string(Decimals(number), '0') : "";
            entry->second = mWriter.workbookAddFormat(mWorkbook);
            mWriter.formatSetNumFormat(entry->second, ("#,##0" + decimals + " \"" + symbol + "\"").c_str());
        }
        return entry->second;
    }
    size_t Decimals(long long number) const
    {
        const tCurrency* const currency = mReport.currencies.Find(number);
        return currency != nullptr ? static_cast<size_t>(currency->decimals) : 0;
    }
    double Amount(long long amount, long long number) const
    {
        return static_cast<double>(amount) / std::pow(10.0, static_cast<double>(Decimals(number)));
    }

    static std::string Cell(lxw_col_t column, lxw_row_t row)
    {
        return std::string(1, static_cast<char>('A' + column)) + std::to_string(row + 1);
    }
    static std::string Range(lxw_col_t column, lxw_row_t first, lxw_row_t last)
    {
        return Cell(column, first) + ":" + Cell(column, last);
    }

    void AddPart(const tPartsGroup& group, const tParts::value_type& entry)
    {
        if (mRow >= kMostRows) {
            mFailed = true;
            return;
        }
        const auto& [key, part] = entry;
        Write(kGroup, mReport.grouping == eGrouping::kLayer ? group.name : "");
        Write(kLibrary, key.first);
        Write(kNumber, key.second);
        Write(kDescription, part.description);
        Write(kManufacturer, part.manufacturer);
        Write(kLengths, Parts::DescribeLengths(part.lengths));
        if (!part.lengths.empty()) {
            WriteNumber(kLength, std::round(std::accumulate(part.lengths.begin(), part.lengths.end(), 0.0) * 10) / 10);
        }
        lxw_format* const money = FormatOf(part.currency);
        WriteNumber(kCount, static_cast<double>(part.count));
        WriteNumber(kPrice, Amount(part.price, part.currency), money);
        WriteFormula(kSum, "=" + Cell(kCount, mRow) + "*" + Cell(kPrice, mRow), Amount(part.GetSum(), part.currency),
                     money);
        const tCurrency* const currency = mReport.currencies.Find(part.currency);
        if (currency != nullptr) {
            Write(kCurrency, currency->code);
        } else {
            WriteNumber(kCurrency, static_cast<double>(part.currency));
        }
        if (mReport.hasStock) {
            WriteNumber(kInStock, static_cast<double>(part.inStock));
            WriteFormula(kToBuy, "=MAX(" + Cell(kCount, mRow) + "-" + Cell(kInStock, mRow) + ",0)",
                         static_cast<double>(part.toBuy), nullptr);
            WriteFormula(kCosts, "=" + Cell(kToBuy, mRow) + "*" + Cell(kPrice, mRow),
                         Amount(part.toBuy, part.currency) * static_cast<double>(part.price), money);
        }
        Write(kRemarks, Parts::DescribeRemarks(part));
        ++mRow;
    }

    /// A row for each currency with the sums of the rows from `first` to the last. Rows of sums between them have no
    /// currency of their own, so that nothing is added twice.
    void AddSums(const std::string& label, lxw_row_t first, const std::vector<const tParts::value_type*>& parts)
    {
        const tTotals totals = Parts::GetTotals(parts);
        const lxw_row_t last = mRow > first ? mRow - 1 : first;
        for (const auto& [number, sum] : totals.needed) {
            const tCurrency* const currency = mReport.currencies.Find(number);
            const std::string code = currency != nullptr ? currency->code : std::to_string(number);
            const std::string criterion = "=SUMIF(" + Range(kCurrency, first, last) + "," +
                                          (currency != nullptr ? "\"" + code + "\"" : code) + ",";
            lxw_format* const money = FormatOf(number);
            std::string title = label;
            Write(kLibrary, title.append(" (").append(code).append(")"), mBold);
            WriteFormula(kSum, criterion + Range(kSum, first, last) + ")", Amount(sum, number), money);
            if (mReport.hasStock) {
                WriteFormula(kCosts, criterion + Range(kCosts, first, last) + ")",
                             Amount(totals.toBuy.at(number), number), money);
            }
            ++mRow;
        }
        ++mRow;
    }

    const tWriter& mWriter;
    const tPartsReport& mReport;
    lxw_workbook* mWorkbook = nullptr;
    lxw_worksheet* mSheet = nullptr;
    lxw_format* mBold = nullptr;
    std::map<long long, lxw_format*> mFormats; ///< the workbook's
    lxw_row_t mRow = 0;
    bool mFailed = false;
};
} // namespace

std::string Parts::MakeWorkbook(const tPartsReport& report, std::string& bytes)
{
    tWriter writer;
    if (std::string problem = writer.Load(); !problem.empty()) {
        return problem;
    }
    const CDescriptor file = MakeNamelessFile();
    if (!file.IsOpen()) {
        return strerror(errno);
    }
    CWorkbook workbook(writer, report, ("/dev/fd/" + std::to_string(file.Get())).c_str());
    if (!workbook.IsOpen()) {
        return "the memory does not suffice";
    }
    workbook.Add("Parts", report.total);
    for (size_t i = 0; report.perLayout && i < report.layouts.size(); ++i) {
        workbook.Add(SheetName(i + 1, report.layouts[i].path), report.layouts[i].list);
    }
    std::string problem = workbook.Close();
    const off_t size = lseek(file.Get(), 0, SEEK_END);
    bytes.resize(size > 0 ? static_cast<size_t>(size) : 0);
    size_t have = 0;
    while (have < bytes.size()) {
        const ssize_t got = pread(file.Get(), bytes.data() + have, bytes.size() - have, static_cast<off_t>(have));
        if (got <= 0) {
            return "cannot be read back";
        }
        have += static_cast<size_t>(got);
    }
    return problem;
}
