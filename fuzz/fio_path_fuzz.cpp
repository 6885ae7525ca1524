// Paths as text. The first line of the input is a path. Each line after it is a step: its first byte chooses the
// operation, the rest is the operation's text.
#include "fio_sys.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Components = std::vector<std::string>;

void require(bool condition, char const *what, FIO_PATH const &path)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s: \"%s\"\n", what, path.fullpath().c_str());
    std::abort();
}

bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// The part of a path to which the rest is relative: "c:/", "c:", "//host/", "/" or nothing.
std::string root_of(std::string const &text)
{
    std::size_t length = 0;
    if (text.size() >= 2 && is_letter(text[0]) && text[1] == ':')
        length = 2;
    else if (text.size() > 2 && text[0] == '/' && text[1] == '/')
        length = std::min(text.find('/', 2), text.size());
    if (length < text.size() && text[length] == '/')
        ++length;
    return text.substr(0, length);
}

Components components_of(std::string_view text)
{
    Components components;
    while (!text.empty()) {
        std::size_t const end = std::min(text.find('/'), text.size());
        if (end != 0)
            components.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return components;
}

// The components that are left after a walk along the path, component by component; ".." at a root has no effect.
Components walk(FIO_PATH const &path)
{
    std::string const text = path.fullpath();
    Components walked;
    for (std::string const &component : components_of(std::string_view(text).substr(root_of(text).size())))
        if (component == ".." && !walked.empty() && walked.back() != "..")
            walked.pop_back();
        else if (component != "." && !(component == ".." && path.absolute()))
            walked.push_back(component);
    return walked;
}

bool is_same_kind(FIO_PATH const &a, FIO_PATH const &b)
{
    return a.absolute() == b.absolute() && a.relative() == b.relative() && a.unc() == b.unc();
}

bool has_separator(std::string const &text)
{
    return text.find_first_of("/\\") != std::string::npos;
}

std::string without_slash(std::string text)
{
    if (!text.empty() && text.back() == '/')
        text.pop_back();
    return text;
}

void check_parts(FIO_PATH const &path)
{
    std::string const text = path.fullpath();
    require(FIO_PATH(text).fullpath() == text, "the text is not in form", path);

    std::string const whole = path.full_directory() + path.filename();
    require(whole == text || (path.unc() && whole == text + '/'), "the parts don't make the whole", path);
    require(!has_separator(path.filename()), "the file name has a separator", path);
    std::string const base = path.base();
    std::string const name = path.filename();
    require(name == base || name == base + '.' + path.extension(), "the file name is not base and extension", path);

    require(!(path.absolute() && path.relative()), "absolute and relative", path);
    require(!path.unc() || path.absolute(), "a network path that is not absolute", path);
    std::string const root = root_of(text);
    auto const after_root = text.begin() + static_cast<std::ptrdiff_t>(root.size());
    require(path.levels() == std::count(after_root, text.end(), '/'), "wrong count of levels", path);
}

void check_simplified(FIO_PATH const &path)
{
    FIO_PATH simple(path);
    simple.become_simplified();
    require(FIO_PATH(simple).become_simplified().fullpath() == simple.fullpath(), "simplifying is not over", path);
    require(simple.fullpath().empty() == path.fullpath().empty(), "simplifying empties or fills", path);
    require(is_same_kind(simple, path), "simplifying changes the kind", path);
    require(root_of(simple.fullpath()) == root_of(path.fullpath()), "simplifying leads to another root", path);
    require(walk(simple) == walk(path), "simplifying leads elsewhere", path);
    require(simple.levels() <= path.levels() + 1, "simplifying adds levels", path);
    Components const kept = components_of(std::string_view(simple.fullpath()).substr(root_of(path.fullpath()).size()));
    // A "." at the beginning keeps a relative path relative.
    require(path.relative() || kept == walk(path), "simplifying leaves dots", path);
}

void check_cd(FIO_PATH const &path, std::string const &text)
{
    FIO_PATH moved(path);
    moved.cd(text);
    FIO_PATH const target(text);
    if (text.empty()) {
        require(moved.fullpath() == path.fullpath(), "cd to nowhere moves", path);
        return;
    }
    require(moved.fullpath().back() == '/', "cd gives no directory", path);
    if (path.fullpath().empty() || !target.relative()) {
        require(moved.fullpath() == without_slash(target.fullpath()) + '/', "cd does not replace", path);
        return;
    }
    require(is_same_kind(moved, path), "cd changes the kind", path);
    require(without_slash(root_of(moved.fullpath())) == without_slash(root_of(path.fullpath())),
            "cd leads to another root", path);
    FIO_PATH by_absolute(target);
    if (path.absolute())
        require(without_slash(by_absolute.become_absolute(path.fullpath()).fullpath()) ==
                    without_slash(moved.fullpath()),
                "cd and become_absolute lead apart", path);
}

void check_setters(FIO_PATH const &path, std::string const &text)
{
    bool const is_name = !text.empty() && !has_separator(text);
    // A drive without a path after it is a drive, not a file name.
    bool const has_directory = !path.full_directory().empty();
    if (is_name && has_directory) {
        FIO_PATH renamed(path);
        renamed.filename(text);
        require(renamed.filename() == text, "another file name than was set", path);
        require(renamed.full_directory() == path.full_directory(), "the file name changes the directory", path);

        FIO_PATH rebased(path);
        rebased.base(text);
        require(path.extension().empty() || rebased.extension() == path.extension(), "the base changes the extension",
                path);
        require(rebased.full_directory() == path.full_directory(), "the base changes the directory", path);
    }
    FIO_PATH extended(path);
    extended.extension(text, "");
    require(has_separator(text) || extended.full_directory() == path.full_directory(),
            "the extension changes the directory", path);
    if (is_name && text.find('.') == std::string::npos && extended.fullpath() != path.fullpath()) {
        require(extended.extension() == text, "another extension than was set", path);
        require(extended.base() == path.base(), "the extension changes the base", path);
    }
    if (!text.empty()) {
        FIO_PATH placed(path);
        placed.directory(text);
        require(placed.filename() == path.filename(), "the directory changes the file name", path);
        require(without_slash(placed.full_directory()) == without_slash(FIO_PATH(text).fullpath()),
                "another directory than was set", path);
    }
}

void apply(FIO_PATH &path, unsigned operation, std::string const &text)
{
    switch (operation % 6) {
    case 0:
        path.cd(text);
        break;
    case 1:
        path.become_simplified();
        break;
    case 2:
        path.filename(text);
        break;
    case 3:
        path.base(text);
        break;
    case 4:
        path.extension(text, "");
        break;
    default:
        path.directory(text);
        break;
    }
}

// The results of the operations don't depend on the separator.
void check_separator(FIO_PATH const &path, unsigned operation, std::string const &text)
{
    FIO_PATH with_slash(path);
    FIO_PATH with_back_slash(path);
    with_back_slash.path_separator('\\');
    require(FIO_PATH(with_back_slash).path_separator('/').fullpath() == path.fullpath(),
            "the separator is not put back", path);
    apply(with_slash, operation, text);
    apply(with_back_slash, operation, text);
    require(with_back_slash.path_separator('/').fullpath() == with_slash.fullpath(), "the separator matters", path);
}

std::string take_line(std::string_view &text)
{
    std::size_t const end = std::min(text.find('\n'), text.size());
    std::string line(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::string_view rest(reinterpret_cast<char const *>(data), size);
    FIO_PATH path(take_line(rest));
    check_parts(path);
    check_simplified(path);
    while (!rest.empty()) {
        std::string const line = take_line(rest);
        unsigned const operation = line.empty() ? 0 : static_cast<unsigned char>(line[0]);
        std::string const text = line.substr(std::min<std::size_t>(1, line.size()));
        check_cd(path, text);
        check_setters(path, text);
        check_separator(path, operation, text);
        apply(path, operation, text);
        check_parts(path);
        check_simplified(path);
    }
    return 0;
}
