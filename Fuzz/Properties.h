// What has to hold for every input, whatever its bytes are. The tests hold it against documents at hand and their
// mutations, the fuzz programs against what libFuzzer comes upon.
#pragma once

#include <string>
#include <string_view>

/// Each takes one input as it would lie in a file and says what does not hold, in words; empty when everything does.
/// That nothing crashes, hangs or reads what it should not is for sanitizers to see.
namespace Properties {
/// Loading gives the same through the stream's window and a narrow one, or none. What a check finds whole loads, and
/// nothing is passed over. What was loaded can be counted and saved; the save is whole, loads, and is saved the same
/// again.
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

// What the host reads. Functions of a library of their own, velmora-host-properties.

/// Messages of a worker, or the frames they come in. A message that is taken has exactly one form; a stream of frames
/// gives the same ones however it is cut. The first byte is an eMessageForm, a stream's second one says how it is cut.
std::string Message(std::string_view bytes);
enum class eMessageForm : unsigned char { kGreeting, kRequest, kAnswer, kStream };
/// What commands print of a worker's answer is valid in its format, and no text has control characters. The first byte
/// says which command, and whether the report stands in the input or is made of what its bytes say.
std::string Report(std::string_view bytes);
/// Lines for serve are the same however they arrive. Each is refused, or its answer repeats id and path.
std::string Serve(std::string_view bytes);
/// A query in the first line, and behind it a text: the full-text index takes whatever the query becomes, finds the
/// text by itself, and has nothing left of it when it is gone.
std::string Query(std::string_view bytes);
/// An index file from elsewhere, opened for searching and for writing: what cannot be used is an error of the database.
std::string Index(std::string_view bytes);
/// An index of three documents with small pages, for that property's inputs.
std::string MakeIndex();
} // namespace Properties
