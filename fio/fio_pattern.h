// Matching of file names against wild cards.
#ifndef FIO_PATTERN_H
#define FIO_PATTERN_H

#include <string_view>

/// Whether the text contains a "*" or a "?".
bool fio_pattern_is_wild(std::string_view text);

/// Whether the whole name matches. "*" matches any number of characters, "?" one character, and "*.*" any name.
/// Upper and lower case differ; callers fold both texts on file systems where they do not.
bool fio_pattern_matches(std::string_view pattern, std::string_view name);

#endif
