// What has to hold for every input, whatever its bytes are. The tests hold it against documents at hand and their
// mutations, the fuzz programs against what libFuzzer comes upon.
#pragma once

#include <string>
#include <string_view>

/// Each takes one input as it would lie in a file and says what does not hold, in words; empty when everything does.
/// That nothing crashes, hangs or reads what it should not is for sanitizers to see.
namespace Properties {
/// Loading gives the same through the stream's window and without it. What a check finds whole loads, and nothing is
/// passed over. What was loaded can be counted and saved; the save is whole, loads, and is saved the same again.
std::string Layout(std::string_view bytes);
/// The same for a track library.
std::string Library(std::string_view bytes);
/// Whatever loads is drawn with sound numbers only; in which style and size, the input's length decides.
std::string Drawing(std::string_view bytes);
/// What was read of a stock file is saved, and comes back as it was.
std::string Stock(std::string_view bytes);
/// The values of a property list are read as preferences within their fields; what is saved of them is the same list.
std::string Preferences(std::string_view bytes);
/// What was pasted is copied, pasted again and then the same. The input is the length of the elements' block (two
/// bytes, the lower one first), that block, and the groups'.
std::string Clipboard(std::string_view bytes);
} // namespace Properties
