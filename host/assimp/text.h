// Names and texts as Assimp delivers them, made fit for the scene.
#pragma once

#include <string>
#include <string_view>

struct aiMetadata;
struct aiString;

namespace maxhost::import {

// `text` as it stands if it is UTF-8; else taken as Latin-1 and recoded, which sets `*recoded`
// (left alone otherwise; may be null).
std::string ToUtf8(std::string_view text, bool* recoded = nullptr);

// Up to its first NUL, in UTF-8 as ToUtf8() makes it.
std::string TextOf(const aiString& text, bool* recoded = nullptr);

// At most `digits` significant digits, without zeros behind the point, for a message.
std::string NumberText(double number, int digits = 6);

// `text` in quotes for a message: control characters as \xNN, cut after 80 bytes.
std::string Quoted(const std::string& text);

// The user-property buffer of a node with this metadata: lines "key = value" that end in CR LF,
// nested values as "outer.inner = value". 3ds Max's own user-property text in an FBX file comes
// first, as it stands. Entries of FBX itself and of the importers are no user properties. Sets
// `*recoded` as TextOf() does.
std::string UserPropertiesOf(const aiMetadata& metadata, bool* recoded = nullptr);

}  // namespace maxhost::import
