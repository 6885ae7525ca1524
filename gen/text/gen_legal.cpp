#include "gen_legal_sys.h"

#include "ver_sys.h"

#include <cstring>

// Lines are wrapped by hand; the blanks at their ends are part of the text.

char const *const GEN_LEGAL_BANNER_ARRAY[13] = {
    "The design tools of Kalvern Suite, the libraries and models",
    "delivered with them, and the files which they write for you, among",
    "them netlists, reports, simulation models and programming files,",
    "may be used only under the license that was delivered with the",
    "suite, or under the agreement that you signed in its place. That",
    "license also says for which devices the output may be used, what",
    "has to stay in a copy, and what is not warranted. The output",
    "describes your design and remains yours; parts of it that come",
    "from libraries of the suite stay under the terms of those",
    "libraries. If you have not read the license, or do not accept it,",
    "do not use the tools or any of their output. The suite is",
    "delivered as it is, without a warranty of any kind; it is for you",
    "to verify that its output is fit.   ",
};
int const GEN_LEGAL_BANNER_ARRAY_SIZE = 13;

char const *const GEN_LEGAL_BSTRM_ENC_ARRAY[51] = {
    "A Disclaimer on the Bitstream Encryption Feature of Kalvern Suite",
    "=================================================================",
    "                                                              ",
    "Kalvern Suite can encrypt the bitstream that configures a     ",
    "device, so that only a device which holds the matching key can",
    "load it. Please read this notice before you turn the feature  ",
    "on, before you write a key into a device, and before you pass ",
    "an encrypted bitstream on to anyone else.                     ",
    "                                                              ",
    "Encryption makes a design harder to read and harder to copy.  ",
    "It makes neither impossible. No method of encryption, and no  ",
    "way to store a key in a device, resists every attack; an      ",
    "attack that is out of reach today may be within reach         ",
    "tomorrow. Whether the feature protects your design well enough",
    "for what it is worth is for you alone to judge.               ",
    "                                                              ",
    "Keys are yours to choose, to store and to guard. The suite    ",
    "does not keep them. A key that is lost cannot be restored, and",
    "a device that has been locked with it may become useless. On  ",
    "some devices a key can be written only once. Try the whole    ",
    "flow with a key of no value before you write a key that       ",
    "matters, and keep that key apart from the files it protects.  ",
    "                                                              ",
    "An encrypted bitstream can be neither checked nor repaired    ",
    "without its key. Keep the design, the settings and the version",
    "of the suite from which the bitstream was made.               ",
    "                                                              ",
    "The feature is provided as it is. There is no warranty that it",
    "is free of faults, that it fits a purpose, or that it keeps   ",
    "others from learning what the bitstream holds. As far as the  ",
    "law permits, nobody who developed or supplied the suite is    ",
    "liable for loss of designs, of keys, of devices, of data or of",
    "profit that comes from using it or from being unable to use   ",
    "it, even if such a loss could have been foreseen.             ",
    "                                                              ",
    "Encryption may be subject to rules on import, on export and on",
    "use, which differ between countries and change over time. You ",
    "are responsible for knowing the rules that apply to you, for  ",
    "asking for the permits that they demand, and for telling those",
    "who receive your devices what they have to observe.           ",
    "                                                              ",
    "Only the bitstream is encrypted. The other files that the     ",
    "suite writes, among them the netlist, the reports and the     ",
    "files of the project, stay readable for everyone who can open ",
    "them. Protect them by the means of your system.               ",
    "                                                              ",
    "When you turn the feature on, you confirm that you have read  ",
    "this notice and that you agree to it. If you do not agree,    ",
    "leave the feature turned off. Nothing else depends on it: all ",
    "other functions stay available to you throughout              ",
    "the whole suite.",
};
int const GEN_LEGAL_BSTRM_ENC_ARRAY_SIZE = 51;

char const *const GEN_LEGAL_TRADEMARK_ARRAY[7] = {
    "Kalvern, Kalvern Suite and the names of its tools are used here as",
    "marks of the Kalvern Suite developers. They may be registered in",
    "some countries and not in others. All other names of products,",
    "companies, devices and standards that appear in the suite, in its",
    "reports or in its documentation belong to their owners, and are",
    "used only to say what is meant. No right to use a mark is granted",
    "by this notice, or by the software.",
};
// Two more than the rows; callers rely on this number.
int const GEN_LEGAL_TRADEMARK_ARRAY_SIZE = 9;

char const *const GEN_COPYRIGHT_WARNING_ARRAY[5] = {
    "Warning: this software is protected by copyright law and by",
    "international treaties. Copying, changing or distributing it,",
    "or any part of it, without the right to do this may be punished",
    "under civil and criminal law, and will be pursued",
    "in every country as far as its law allows it.",
};
int const GEN_COPYRIGHT_WARNING_ARRAY_SIZE = 5;

namespace {

constexpr char const *DO_NOT_EDIT_ARRAY[3] = {
    "Do not edit this file by hand: it was written by a tool of this suite,",
    "and the next run of that tool writes it anew without your changes.",
    "Edit the input of the tool, or its settings, and rerun it.",
};

// The length of a line with at most one of the blanks at its end.
std::size_t size_with_one_blank(char const *line)
{
    std::size_t const size = std::strlen(line);
    std::size_t text_size = size;
    while (text_size > 0 && line[text_size - 1] == ' ')
        --text_size;
    return text_size < size ? text_size + 1 : size;
}

template <std::size_t ROWS>
std::string joined_lines(char const *const (&lines)[ROWS])
{
    std::string text;
    for (char const *line : lines)
        text.append(line, size_with_one_blank(line)) += '\n';
    return text;
}

void append_line(std::string &text, char const *prefix, char const *line)
{
    if (prefix != nullptr)
        text += prefix;
    text.append(line) += '\n';
}

template <std::size_t ROWS>
void append_lines(std::string &text, char const *prefix, char const *const (&lines)[ROWS])
{
    for (char const *line : lines)
        append_line(text, prefix, line);
}

} // namespace

std::string gen_get_legal_banner()
{
    return joined_lines(GEN_LEGAL_BANNER_ARRAY);
}

std::string gen_get_legal_trademark_text()
{
    return joined_lines(GEN_LEGAL_TRADEMARK_ARRAY);
}

std::string gen_get_legal_warning_text()
{
    return joined_lines(GEN_COPYRIGHT_WARNING_ARRAY);
}

std::string gen_get_bitstream_encryption_legal_text()
{
    return joined_lines(GEN_LEGAL_BSTRM_ENC_ARRAY);
}

std::string gen_get_legal_text(char const *prefix)
{
    std::string text;
    append_line(text, prefix, ver_get_copyright_string().c_str());
    append_lines(text, prefix, GEN_LEGAL_BANNER_ARRAY);
    return text;
}

std::string gen_get_do_not_edit_text(char const *prefix)
{
    std::string text;
    append_lines(text, prefix, DO_NOT_EDIT_ARRAY);
    return text;
}
