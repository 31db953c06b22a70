// A drawing colour.
#pragma once

/// A colour with alpha, components from 0 to 1, copied by value. White and opaque by default.
class CColor {
public:
    constexpr CColor() = default;
    constexpr CColor(double red, double green, double blue, double alpha)
        : mRed(red), mGreen(green), mBlue(blue), mAlpha(alpha)
    {}

    /// A grey.
    constexpr void SetFromWhiteValue(double white, double alpha) { *this = CColor(white, white, white, alpha); }

    /// From components 0 to 65535; becomes opaque.
    constexpr void SetFromRGBColorValues(unsigned short red, unsigned short green, unsigned short blue)
    {
        *this = CColor(red / 65535.0, green / 65535.0, blue / 65535.0, 1.0);
    }

    constexpr void SetFromRedGreenBlueAlphaComponents(double red, double green, double blue, double alpha)
    {
        *this = CColor(red, green, blue, alpha);
    }

    constexpr double R() const { return mRed; }
    constexpr double G() const { return mGreen; }
    constexpr double B() const { return mBlue; }
    constexpr double A() const { return mAlpha; }

private:
    double mRed = 1.0;
    double mGreen = 1.0;
    double mBlue = 1.0;
    double mAlpha = 1.0;
};
