// The legal notices of the suite: fixed lines, and texts composed of them. Every line of a text ends in one line feed,
// also the last one. Any thread may call any of these functions.
#ifndef GEN_LEGAL_SYS_H
#define GEN_LEGAL_SYS_H

#include "zel_export_sys.h"

#include <string>

// The lines without line ends. Some end in blanks: in the disclaimer an empty line consists of 62 blanks.

/// The terms of use of the design tools and their output.
extern GEN_API char const *const GEN_LEGAL_BANNER_ARRAY[13];
extern GEN_API int const GEN_LEGAL_BANNER_ARRAY_SIZE; ///< 13

/// The disclaimer on the bitstream encryption feature: a title, its underline, and paragraphs.
extern GEN_API char const *const GEN_LEGAL_BSTRM_ENC_ARRAY[51];
extern GEN_API int const GEN_LEGAL_BSTRM_ENC_ARRAY_SIZE; ///< 51

/// The trademark notice. It has 7 lines although its size constant is 9: read only these 7.
extern GEN_API char const *const GEN_LEGAL_TRADEMARK_ARRAY[7];
extern GEN_API int const GEN_LEGAL_TRADEMARK_ARRAY_SIZE; ///< 9, two more than there are lines

/// The warning of unauthorised copying.
extern GEN_API char const *const GEN_COPYRIGHT_WARNING_ARRAY[5];
extern GEN_API int const GEN_COPYRIGHT_WARNING_ARRAY_SIZE; ///< 5

// Texts for display. Blanks at the end of a line are reduced to one, so that an empty line is a single blank.

/// The terms of use: 13 lines.
GEN_API std::string gen_get_legal_banner();

/// The trademark notice: 7 lines.
GEN_API std::string gen_get_legal_trademark_text();

/// The copyright warning: 5 lines.
GEN_API std::string gen_get_legal_warning_text();

/// The disclaimer on the bitstream encryption feature: 51 lines.
GEN_API std::string gen_get_bitstream_encryption_legal_text();

// Texts for the beginning of a generated file. Blanks at the end of a line are kept.

/// The copyright line of the suite and the terms of use: 14 lines.
///
/// @param prefix  written at the beginning of each line, for instance "// "; null means no prefix
GEN_API std::string gen_get_legal_text(char const *prefix);

/// The warning that a generated file is not to be edited by hand: 3 lines.
///
/// @param prefix  written at the beginning of each line, for instance "-- "; null means no prefix
GEN_API std::string gen_get_do_not_edit_text(char const *prefix);

#endif
