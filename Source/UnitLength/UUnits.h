// Units in which lengths are shown; inside, every length is in mm.
#pragma once

/// Converts lengths and makes texts of them. An unknown unit is fatal. Each text lies in a static buffer of its
/// function: valid until its next call, for one thread only.
class UUnits {
public:
    /// Unit codes as the preferences store them.
    enum eUnit : int { kMillimetre = 1, kCentimetre = 2, kInch = 3, kFoot = 4 };

    /// Millimetres to a unit.
    static double MM2Unit(int unit, double millimetres);

    /// A length in a unit to millimetres.
    static double Unit2MM(int unit, double value);

    /// Name of the unit, UTF-8, in the language of the application; at most 31 bytes. The short form of inch is a
    /// double quote in every language.
    static const char* GetUnitStr(int unit, bool shortForm);

    /// "16.5 mm", "0.65 \"": two decimals for inch and foot, one for the others. At most 127 bytes: a longer text is
    /// cut and reported as a minor error.
    static const char* BuildMeasureUnitString(int unit, double millimetres);

    /// "100 cm": rounded to a whole number of the unit. In a buffer of its own.
    static const char* BuildMeasureUnitString(int unit, int millimetres);

    /// Whether lengths in the unit have decimals (mm and cm) or fractions.
    static bool IsDecBased(int unit);
};
