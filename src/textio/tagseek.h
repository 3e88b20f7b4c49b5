// Text input: the tag search. A text file may hold several blocks, each opened by a line
// that bears a tag; SeekTo finds such a line and leaves the file on the line behind it.
// The number reader with its symbols is a set of CVirtMat statics (frame/virtmat.h), and
// each class's ReadASCII lives with the class; all of them rest on this folder.
//
// The search is case-blind, matches the tag anywhere in a line after the line is trimmed
// and upper-cased, and ignores what stands behind the comment marker. The first line that
// holds the tag wins; after a failed search the file stands where the search began.
//
// Choices made here, for all text input:
// - Line ends: lines end in CR LF or in LF alone. The file is placed by the real position
//   of the line reader, behind the last line it handed out, never by counting two bytes
//   per line end; so LF files are placed exactly as CR LF files are. A last line without
//   a line end leaves the file at its end.
// - A symbol is expanded as left text, number, right text, byte for byte, so a NUL byte in
//   a line survives an expansion instead of cutting the line.
// - A line that is the gravity word alone is expanded by the ordinary search, so a search
//   index behind it (a call at the line's end) leaves it alone, like every other word.
// - A reader whose allocation fails, or whose size lies beyond an int, leaves the object
//   empty and stores nothing; the file is placed as after a full read.
// - The readers skip the expansion searches of the number reader once no symbol word with
//   boundaries on both sides stands at or behind the index, since no call could change the
//   line from there: the tokens and lines are those of ReadNumber, and a row costs one walk
//   instead of one walk per number.
#pragma once

#include "platform/afx.h"

// Searches the file line by line for the tag, from the current position (bFromCurrent)
// or from the start. True: the file stands behind the tag's line. False: it stands at the
// start position. Unless the start lies at the end of the file, *pstrComment (if given)
// comes back in upper case.
bool SeekTo(CString strTag, CFile &file, CString *pstrComment, bool bFromCurrent);
// The same search; strTag comes back in upper case, and when found as the prepared line
// that held it (trimmed, upper case, without its comment), so a caller gets the arguments
// standing on the tag's line.
bool SeekTo_ReplLine(CString &strTag, CFile &file, CString *pstrComment, bool bFromCurrent);
