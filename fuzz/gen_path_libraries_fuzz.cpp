// The project's list of library directories. The input is the list and the text of directories to append or remove,
// separated by the first line feed. Nothing here accesses the disk.
#include "gen_path_sys.h"

#include "fuzz_target.h"

#include <unordered_set>

namespace {

using List = std::vector<std::string>;

bool is_pattern(std::string const &text)
{
    return text.find(';') == std::string::npos && FIO_PATH(text).filename().find_first_of("*?") != std::string::npos;
}

// The elements of a text, which are separated by ";"; empty ones are left out.
List elements(std::string const &text)
{
    List list;
    std::string element;
    for (char const c : is_pattern(text) ? std::string() : text + ';')
        if (c != ';')
            element += c;
        else if (!element.empty()) {
            list.push_back(FIO_PATH(element).fullpath());
            element.clear();
        }
    return list;
}

List live_list()
{
    List list;
    for (FIO_PATH const &path : *gen_project_lib_fio_paths())
        list.push_back(path.fullpath());
    return list;
}

std::string joined(List const &list)
{
    std::string text;
    for (std::string const &element : list)
        text += (text.empty() ? "" : ";") + element;
    return text;
}

// Paths that differ in case alone are the same directory.
class Known
{
public:
    explicit Known(List const &list)
    {
        for (std::string const &element : list)
            insert(element);
    }
    bool insert(std::string const &element) { return m_folded.insert(folded(element)).second; }
    bool has(std::string const &element) const { return m_folded.count(folded(element)) != 0; }

private:
    static std::string folded(std::string text)
    {
        for (char &c : text)
            if (c >= 'A' && c <= 'Z')
                c = static_cast<char>(c - 'A' + 'a');
        return text;
    }

    std::unordered_set<std::string> m_folded;
};

// The expected state: the text of the edited list, or the former text if the edit changed nothing.
void require_state(List const &former, List const &edited, std::string const &former_text)
{
    std::string const text = edited.size() == former.size() ? former_text : joined(edited);
    require(gen_get_project_library_paths() == text);
    require(live_list() == elements(text));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    constexpr std::size_t LONGEST = 400; // a longer list takes more time and has no other cases
    if (size > LONGEST)
        return -1;
    std::string input(data, data + size);
    std::replace(input.begin(), input.end(), '\0', '0'); // texts of this interface end at a null character
    std::size_t const border = std::min(input.find('\n'), input.size());
    std::string const list = input.substr(0, border);
    std::string const edit = input.substr(std::min(border + 1, input.size()));

    gen_set_project_library_paths(list);
    require(gen_get_project_library_paths() == list);
    List const former = live_list();
    require(former == elements(list));

    List appended = former;
    Known known(former);
    for (std::string const &element : elements(edit))
        if (known.insert(element))
            appended.push_back(element);
    gen_append_project_library_paths(edit);
    require_state(former, appended, list);
    gen_append_project_library_paths(edit);
    require_state(former, appended, list);

    gen_set_project_library_paths(list);
    List removed = former;
    Known const unwanted(elements(edit));
    removed.erase(std::remove_if(removed.begin(), removed.end(),
                                 [&](std::string const &element) { return unwanted.has(element); }),
                  removed.end());
    gen_remove_project_library_paths(edit);
    require_state(former, removed, list);

    gen_set_project_library_paths(list + ";x");
    gen_remove_project_library_paths(list + ";x");
    require(gen_get_project_library_paths().empty() && live_list().empty());
    return 0;
}
