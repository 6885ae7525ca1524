// Matching of file names against wild cards.
#ifndef FIO_PATTERN_H
#define FIO_PATTERN_H

#include <string_view>

/// There is a "*" or a "?" in the text.
bool fio_pattern_is_wild(std::string_view text);

/// The whole name matches: "*" stands for any run of characters, "?" for one, "*.*" for any name.
/// Case counts; callers fold both sides where the file system does not tell it apart.
bool fio_pattern_matches(std::string_view pattern, std::string_view name);

#endif
