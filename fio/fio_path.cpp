#include "fio_sys.h"

#include "fio/fio_extension.h"
#include "fio/os/fio_os.h"
#include "sys/sys_path_text.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr std::string_view SEPARATORS = "/\\";

// For a byte that is not the second one of a character.
bool is_separator(char c)
{
    return c == '/' || c == '\\';
}

bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool has_drive(std::string_view text)
{
    return text.size() >= 2 && is_letter(text[0]) && text[1] == ':';
}

bool has_host(std::string_view text)
{
    return text.size() > 2 && is_separator(text[0]) && is_separator(text[1]) && !is_separator(text[2]);
}

// Length of the drive or the host at the start: 2 for "c:/a", 6 for "//host/a".
std::size_t volume_length(std::string_view text)
{
    if (has_drive(text))
        return 2;
    if (has_host(text))
        return std::min(sys_find_separator(text, 2), text.size());
    return 0;
}

// Length of the volume and the separator after it: 3 for "c:/a", 2 for "c:a", 1 for "/a".
std::size_t root_length(std::string_view text)
{
    std::size_t const volume = volume_length(text);
    return volume < text.size() && is_separator(text[volume]) ? volume + 1 : volume;
}

bool has_root(std::string_view text)
{
    return has_host(text) || root_length(text) > volume_length(text);
}

// "c:", the current directory of a drive. A separator after it would make it the root of the drive.
bool is_drive_alone(std::string_view text)
{
    return text.size() == 2 && has_drive(text);
}

std::string_view without_leading_dot(std::string_view extension)
{
    return !extension.empty() && extension.front() == '.' ? extension.substr(1) : extension;
}

// Removes the first component and the separators after it from the text.
std::string_view take_component(std::string_view &text)
{
    std::size_t const end = std::min(sys_find_separator(text, 0), text.size());
    std::string_view const component = text.substr(0, end);
    text.remove_prefix(std::min(text.find_first_not_of(SEPARATORS, end), text.size()));
    return component;
}

// The components without "." and "..", except for ".." at the start of a path without a root.
std::vector<std::string_view> simplified(std::string_view components, bool rooted)
{
    std::vector<std::string_view> kept;
    while (!components.empty()) {
        std::string_view const component = take_component(components);
        bool const up = component == "..";
        if (up && !kept.empty() && kept.back() != "..")
            kept.pop_back();
        else if (component != "." && !(up && rooted))
            kept.push_back(component);
    }
    return kept;
}

bool is_directory_text(std::string_view text)
{
    std::size_t const separator = sys_find_last_separator(text);
    std::string_view const name = separator == std::string_view::npos ? text : text.substr(separator + 1);
    return name.empty() || name == "." || name == "..";
}

// Replaces every run of separators by one separator of the given kind. The two before a host stay two.
void normalise(std::string &text, char separator)
{
    std::size_t const start = has_host(text) ? 2 : 0;
    std::fill_n(text.begin(), start, separator);
    std::size_t out = start;
    bool in_run = false;
    for (std::size_t in = start; in < text.size(); ++in) {
        bool const was_in_run = in_run;
        in_run = is_separator(text[in]);
        if (was_in_run && in_run)
            continue;
        text[out++] = in_run ? separator : text[in];
        if (sys_is_lead_byte(text[in]) && in + 1 < text.size())
            text[out++] = text[++in];
    }
    text.resize(out);
}

void end_in_separator(std::string &text, char separator)
{
    if (!text.empty() && !sys_ends_in_separator(text))
        text += separator;
}

std::size_t filename_position(std::string_view text)
{
    std::size_t const separator = sys_find_last_separator(text);
    std::size_t const after = separator == std::string_view::npos ? 0 : separator + 1;
    return std::max(after, volume_length(text));
}

// The position of the dot of the extension, or the end of the text.
std::size_t extension_position(std::string_view text)
{
    std::size_t const start = filename_position(text);
    std::size_t const dot = text.rfind('.');
    bool const none = dot == std::string_view::npos || dot <= start || text.substr(start) == "..";
    return none ? text.size() : dot;
}

} // namespace

FIO_PATH::FIO_PATH(std::string const &text) : m_text(text)
{
    normalise(m_text, m_separator);
}

FIO_PATH::FIO_PATH(char const *text) : m_text(text != nullptr ? text : "")
{
    normalise(m_text, m_separator);
}

FIO_PATH &FIO_PATH::operator=(std::string const &text)
{
    m_text = text;
    m_separator = '/';
    normalise(m_text, m_separator);
    return *this;
}

FIO_PATH &FIO_PATH::operator=(char const *text)
{
    m_text = text != nullptr ? text : "";
    m_separator = '/';
    normalise(m_text, m_separator);
    return *this;
}

std::string FIO_PATH::full_directory() const
{
    std::string directory = m_text.substr(0, filename_position(m_text));
    if (has_host(directory) && !sys_ends_in_separator(directory))
        directory += m_separator;
    return directory;
}

std::string FIO_PATH::filename() const
{
    return m_text.substr(filename_position(m_text));
}

std::string FIO_PATH::base() const
{
    std::size_t const start = filename_position(m_text);
    return m_text.substr(start, extension_position(m_text) - start);
}

std::string FIO_PATH::extension() const
{
    return std::string(without_leading_dot(std::string_view(m_text).substr(extension_position(m_text))));
}

FIO_PATH &FIO_PATH::filename(std::string const &text)
{
    std::string result = full_directory();
    // A text that begins with a separator is below the directory all the same.
    bool const under_directory = sys_ends_in_separator(result);
    std::size_t const start = under_directory ? std::min(text.find_first_not_of(SEPARATORS), text.size()) : 0;
    result.append(text, start);
    m_text = std::move(result);
    normalise(m_text, m_separator);
    return *this;
}

FIO_PATH &FIO_PATH::base(std::string const &text)
{
    return filename(text + m_text.substr(extension_position(m_text)));
}

FIO_PATH &FIO_PATH::directory(std::string const &text)
{
    FIO_PATH path(text);
    end_in_separator(path.m_text, '/');
    m_text = path.m_text + filename();
    normalise(m_text, m_separator);
    return *this;
}

FIO_PATH &FIO_PATH::extension(std::string const &text, std::string const &second)
{
    if (is_directory_text(std::string_view(m_text).substr(filename_position(m_text))))
        return *this;
    m_text.erase(extension_position(m_text));
    for (std::string_view part : {std::string_view(text), std::string_view(second)})
        if (std::string_view const extension = without_leading_dot(part); !extension.empty())
            m_text.append(1, '.').append(extension);
    normalise(m_text, m_separator);
    return *this;
}

FIO_PATH &FIO_PATH::extension(FIO_EXTENSION_TYPE type, FIO_EXTENSION_TYPE second)
{
    return extension(fio_extension_text(type), fio_extension_text(second));
}

FIO_PATH &FIO_PATH::cd(std::string const &text)
{
    if (text.empty())
        return *this;
    FIO_PATH const target(text);
    if (m_text.empty() || !target.relative())
        m_text = target.m_text;
    else {
        if (!is_drive_alone(m_text))
            end_in_separator(m_text, m_separator);
        m_text += target.m_text;
        become_simplified();
        if (is_drive_alone(m_text))
            m_text += '.';
    }
    end_in_separator(m_text, m_separator);
    normalise(m_text, m_separator);
    return *this;
}

FIO_PATH &FIO_PATH::become_absolute(std::string const &directory)
{
    if (!relative())
        return *this;
    FIO_PATH start(directory);
    if (start.relative()) {
        FIO_PATH current(fio_os_current_directory());
        if (current.m_text.empty())
            return *this;
        start = current.cd(directory);
    }
    end_in_separator(start.m_text, '/');
    m_text.insert(0, start.m_text);
    normalise(m_text, m_separator);
    return become_simplified();
}

FIO_PATH &FIO_PATH::become_simplified()
{
    if (m_text.empty())
        return *this;
    std::string_view const text = m_text;
    std::size_t const root = root_length(text);
    bool const directory = is_directory_text(text);

    std::string result(text.substr(0, root));
    std::vector<std::string_view> const kept = simplified(text.substr(root), has_root(text));
    // A first name that looks like a drive gets "./" before it, so that it does not become one.
    if (root == 0 && !kept.empty() && has_drive(kept.front()))
        result.append(1, '.').append(1, m_separator);
    for (std::string_view component : kept) {
        if (component.data() != kept.front().data())
            result += m_separator;
        result += component;
    }
    if (result.empty())
        result = '.';
    if (directory && !kept.empty())
        result += m_separator;
    m_text = std::move(result);
    if (m_text == ".")
        end_in_separator(m_text, m_separator);
    return *this;
}

bool FIO_PATH::absolute() const
{
    return has_root(m_text);
}

bool FIO_PATH::relative() const
{
    return root_length(m_text) == 0;
}

bool FIO_PATH::unc() const
{
    return has_host(m_text);
}

int FIO_PATH::levels() const
{
    int count = 0;
    for (std::size_t at = sys_find_separator(m_text, root_length(m_text)); at != std::string::npos;
         at = sys_find_separator(m_text, at + 1))
        ++count;
    return count;
}

FIO_PATH &FIO_PATH::path_separator(char separator)
{
    if (is_separator(separator)) {
        m_separator = separator;
        normalise(m_text, m_separator);
    }
    return *this;
}

FIO_PATH &FIO_PATH::change_path_separators_for_windows_api()
{
    return path_separator(fio_os_separator());
}
