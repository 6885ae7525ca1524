#include "fio_sys.h"

#include "fio/fio_pattern.h"
#include "fio/os/fio_os.h"
#include "sys/sys_path_text.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

// Whether a component is "." or "..", or begins with a point.
bool has_dotted_component(std::string_view path)
{
    bool at_start = true;
    for (std::size_t at = 0; at < path.size(); ++at) {
        if (at_start && path[at] == '.')
            return true;
        at_start = sys_is_separator(path, at);
    }
    return false;
}

void append_directory(std::string &buffer, char const *directory)
{
    if (*directory == '\0')
        return;
    buffer += directory;
    if (!sys_ends_in_separator(buffer))
        buffer += '/';
}

// Writes the path below a directory of the list to the buffer. Fast path: the texts are appended to each other. Slow
// path, for texts that may contain "." or "..": the result is simplified.
void join(std::string &buffer, FIO_PATH const &results_directory, FIO_PATH const &directory, char const *path)
{
    buffer.clear();
    bool const relative = directory.relative();
    if (relative && (has_dotted_component(static_cast<char const *>(results_directory)) ||
                     has_dotted_component(static_cast<char const *>(directory)) || has_dotted_component(path))) {
        append_directory(buffer, directory);
        buffer += path;
        buffer = FIO_PATH(buffer).become_absolute(results_directory.fullpath());
        return;
    }
    if (relative)
        append_directory(buffer, results_directory);
    append_directory(buffer, directory);
    buffer += path;
    sys_use_forward_slashes(buffer);
}

bool is_empty(FIO_PATH const &path)
{
    char const *const text = path;
    return *text == '\0';
}

std::string folded_name(std::string name)
{
    fio_os_fold_case(name);
    return name;
}

// The file names to try, in byte order, each once.
std::vector<std::string> candidate_names(std::string const &base, std::vector<std::string> const &extensions)
{
    std::vector<std::string> names;
    std::vector<std::string> known;
    for (std::string const &extension : extensions) {
        std::size_t const start = !extension.empty() && extension.front() == '.' ? 1 : 0;
        std::string name = base;
        if (extension.size() > start)
            name.append(1, '.').append(extension, start);
        std::string key = folded_name(name);
        if (std::find(known.begin(), known.end(), key) != known.end())
            continue;
        known.push_back(std::move(key));
        names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<FIO_OS_ENTRY> sorted_entries(std::string const &directory)
{
    std::vector<FIO_OS_ENTRY> entries;
    fio_os_list(directory.c_str(), entries);
    std::sort(entries.begin(), entries.end(),
              [](FIO_OS_ENTRY const &left, FIO_OS_ENTRY const &right) { return left.name < right.name; });
    return entries;
}

// One call of find_all(). Each directory has two texts: its absolute path, and the text before the names in results.
struct Walk
{
    bool every_file;
    std::vector<std::string> names;
    bool descend;
    std::list<FIO_PATH> found;

    void visit(std::string const &place, std::string const &shown)
    {
        if (!every_file)
            for (std::string const &name : names)
                if (fio_os_is_regular((place + name).c_str()))
                    found.emplace_back(shown + name);
        if (!every_file && !descend)
            return;
        std::vector<FIO_OS_ENTRY> const entries = sorted_entries(place);
        if (every_file)
            for (FIO_OS_ENTRY const &entry : entries)
                if (entry.kind == FIO_OS_KIND::REGULAR)
                    found.emplace_back(shown + entry.name);
        if (descend)
            for (FIO_OS_ENTRY const &entry : entries)
                if (entry.kind == FIO_OS_KIND::DIRECTORY)
                    visit(place + entry.name + '/', shown + entry.name + '/');
    }
};

} // namespace

FIO_FIND::FIO_FIND(std::string const &text)
{
    init(text);
}

FIO_FIND::FIO_FIND(std::list<FIO_PATH> const &paths) : m_paths(paths) {}

void FIO_FIND::init(std::string const &text)
{
    m_paths.clear();
    m_pattern = FIO_PATH();
    m_names.clear();
    m_next_name = 0;

    if (text.find(';') == std::string::npos && fio_pattern_is_wild(FIO_PATH(text).filename())) {
        m_pattern = text;
        return;
    }
    for (std::size_t start = 0; start < text.size();) {
        std::size_t const end = std::min(text.find(';', start), text.size());
        if (end > start)
            m_paths.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
}

bool FIO_FIND::set_directory_for_results_to_become_absolute_to(char const *directory)
{
    m_results_directory = directory;
    return !is_empty(m_results_directory);
}

FIO_PATH FIO_FIND::find_first_relative_path(FIO_PATH const &path)
{
    if (is_empty(path) || path.absolute())
        return {};
    for (FIO_PATH const &directory : m_paths) {
        if (is_empty(directory))
            continue;
        join(m_buffer, m_results_directory, directory, path);
        if (!fio_os_exists(m_buffer.c_str()))
            continue;
        FIO_PATH hit(m_buffer);
        // The directory for results may itself be relative; it is then below the current one.
        return directory.relative() ? hit.become_absolute(std::string()) : hit;
    }
    return {};
}

bool FIO_FIND::find_all(std::string const &name, std::vector<std::string> const &extensions, std::list<FIO_PATH> *out,
                        bool absolute, bool descend)
{
    if (out == nullptr || name.empty() || FIO_PATH(name).absolute())
        return false;
    Walk walk{name == "*", {}, descend, {}};
    if (!walk.every_file)
        walk.names = candidate_names(name, extensions);
    for (FIO_PATH const &directory : m_paths) {
        if (is_empty(directory))
            continue;
        std::string shown;
        append_directory(shown, directory);
        std::string const place = FIO_PATH(shown).become_absolute(m_results_directory.fullpath()).fullpath();
        walk.visit(place, absolute ? place : shown);
    }
    bool const any = !walk.found.empty();
    out->splice(out->end(), walk.found);
    return any;
}

std::string FIO_FIND::find_first()
{
    m_names.clear();
    m_next_name = 0;
    if (is_empty(m_pattern))
        return {};
    std::string const pattern = folded_name(m_pattern.filename());
    for (FIO_OS_ENTRY &entry : sorted_entries(m_pattern.full_directory()))
        if (entry.kind == FIO_OS_KIND::REGULAR && fio_pattern_matches(pattern, folded_name(entry.name)))
            m_names.push_back(std::move(entry.name));
    return find_next();
}

std::string FIO_FIND::find_next()
{
    return m_next_name < m_names.size() ? m_names[m_next_name++] : std::string();
}
