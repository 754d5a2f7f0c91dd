// Names and texts as Assimp delivers them, made fit for the scene.
#pragma once

#include <string>

struct aiMetadata;
struct aiString;

namespace maxhost::import {

// Up to its first NUL; a text that is not UTF-8 is taken as Latin-1 and recoded, which sets
// `*recoded` (left alone otherwise; may be null).
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
