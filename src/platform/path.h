// Parts of a path, with the system's own separator.

#pragma once

#include <string>
#include <string_view>

namespace quorvan::platform {

// What stands behind the last separator; empty when the path holds none.
std::u16string_view NameBehindSeparator(std::u16string_view path);

// The last component: the same, or the whole path when it holds no separator.
std::u16string_view LastComponent(std::u16string_view path);

// What stands before the last separator, the separator itself for the root; empty when the path
// holds none.
std::u16string_view FolderOf(std::u16string_view path);

// `name` in `folder`, with one separator between them.
std::u16string JoinPath(std::u16string_view folder, std::u16string_view name);

// `path` up to the last dot of its last component; the whole path without one.
std::u16string_view WithoutExtension(std::u16string_view path);

// From the last dot of the last component on, lower case for A to Z; empty without a dot.
std::u16string LowerCaseExtension(std::u16string_view path);

// The user's desktop folder; the home folder where there is none, empty without a home.
std::u16string DesktopFolder();

// `path` made absolute against the working directory, nothing resolved.
std::u16string AbsolutePath(std::u16string_view path);

}  // namespace quorvan::platform
