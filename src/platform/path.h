// Parts of a path. The separator is the system's own: '/' on POSIX, '\' on Windows, where '/' is
// read as a separator, too. No function but DesktopFolder, AbsolutePath and PathOfAddress asks the
// system. Returned views point into the argument.

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvan::platform {

// The part of `path` after the last separator; empty for a path without a separator.
std::u16string_view NameBehindSeparator(std::u16string_view path);

// The last component of `path`: the part after the last separator, or the whole path without a
// separator.
std::u16string_view LastComponent(std::u16string_view path);

// The part of `path` before the last separator, with this separator when it is the first character
// or, on Windows, the first behind a drive (C:\, \\?\C:\); empty for a path without a separator.
std::u16string_view FolderOf(std::u16string_view path);

// The path of `name` in `folder`: both, with a separator between them unless `folder` is empty or
// ends with a separator.
std::u16string JoinPath(std::u16string_view folder, std::u16string_view name);

// `path` up to the last dot of its last component, without the dot; the whole path when that
// component has no dot.
std::u16string_view WithoutExtension(std::u16string_view path);

// The extension of `path`: the last component from its last dot on, with A to Z in lower case;
// empty when that component has no dot.
std::u16string LowerCaseExtension(std::u16string_view path);

// The path of the user's desktop folder; the home folder when there is no desktop folder; empty
// when the environment names no home folder.
std::u16string DesktopFolder();

// The absolute form of `path`, which may be relative to the working directory. Links are not
// resolved, nor is ".." on POSIX. On Windows the only separator in the result is '\'.
// Returns `path` itself when the system does not tell the working directory.
std::u16string AbsolutePath(std::u16string_view path);

// The path that other programs spell as the address file://`host``path`, which is UTF-8, or on
// POSIX the bytes of the path, and no longer percent-encoded. On Windows a path without a drive on
// a host leads into the network. Nothing for a path that lies on another machine otherwise,
// nor on Windows for a path with U+FFFD, which stands for what an address cannot spell.
std::optional<std::u16string> PathOfAddress(const std::string& host, const std::string& path);

}  // namespace quorvan::platform
