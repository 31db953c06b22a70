// Keys of the records that follow a component's common block.
#pragma once

enum : unsigned short {
    kKeyType = 300,
    kKeyLength = 311,
    kKeyRadius = 312,
    kKeyArcAngle = 313,
    kKeyMaxLength = 314,
    kKeyRadiusX = 315,
    kKeyRadiusY = 316,
    kKeyOvalLineThickness = 317,
    kKeyNumPoints = 318,
    kKeyPointX = 319,
    kKeyPointY = 320,
    kKeyCloseFlag = 321,
    kKeyLegacySubType = 322,
    kKeyPolyLineThickness = 323,
    kKeyTextSize = 324,
    kKeyTextStyle = 325,
    kKeyFontName = 326,
    kKeyText = 327
};
