#include "gen_undo_redo_sys.h"

#include "gen/process/gen_log_file.h"
#include "mem_sys.h"

#include <utility>

namespace {

constexpr char FILE_NAME[] = "undo_redo.txt";

constexpr char LINE_FORMAT[] = "\t%6d.\t%s";
constexpr char COMMENT_FORMAT[] = "%s\n\t\t\t%s";
constexpr char UNDO_HEADING[] = "\tUndo Commands";
constexpr char REDO_HEADING[] = "\tRedo Commands";

} // namespace

void GEN_UNDO_REDO_MGR::Commands::add(std::string const &command, std::string const &comment)
{
    if (command.empty())
        return;
    ++count;
    std::string line;
    stl_sprintf(&line, LINE_FORMAT, count, command.c_str());
    if (!comment.empty())
        stl_sprintf(&line, COMMENT_FORMAT, line.c_str(), comment.c_str());
    lines.push_back(std::move(line));
}

void GEN_UNDO_REDO_MGR::Commands::write(std::ostream &out, char const *heading) const
{
    if (count == 0)
        return;
    out << '\n' << heading << '\n';
    for (std::string const &line : lines)
        out << line << '\n';
}

void GEN_UNDO_REDO_MGR::Section::write(std::ostream &out) const
{
    out << name << '\n';
    if (!description.empty())
        out << description << '\n';
    undo.write(out, UNDO_HEADING);
    redo.write(out, REDO_HEADING);
    out << "\n\n";
}

GEN_UNDO_REDO_MGR::GEN_UNDO_REDO_MGR() = default;
GEN_UNDO_REDO_MGR::GEN_UNDO_REDO_MGR(GEN_UNDO_REDO_MGR const &) = default;
GEN_UNDO_REDO_MGR &GEN_UNDO_REDO_MGR::operator=(GEN_UNDO_REDO_MGR const &) = default;
GEN_UNDO_REDO_MGR::~GEN_UNDO_REDO_MGR() = default;

void GEN_UNDO_REDO_MGR::start_new_file(std::string const &directory)
{
    m_path.directory(directory);
    m_path.filename(FILE_NAME);
    m_finished_sections.clear();
}

void GEN_UNDO_REDO_MGR::begin_section(std::string const &name)
{
    m_section = {name, {}, {}, {}};
}

void GEN_UNDO_REDO_MGR::add_description(std::string const &text)
{
    m_section.description = text;
}

void GEN_UNDO_REDO_MGR::add_undo_command(std::string const &command, std::string const &comment)
{
    m_section.undo.add(command, comment);
}

void GEN_UNDO_REDO_MGR::add_redo_command(std::string const &command, std::string const &comment)
{
    m_section.redo.add(command, comment);
}

void GEN_UNDO_REDO_MGR::end_section()
{
    if (!m_section.name.empty() && (m_section.undo.count >= 1 || m_section.redo.count >= 1))
        m_finished_sections.push_back(m_section);
}

void GEN_UNDO_REDO_MGR::commit_file()
{
    GEN_LOG_FILE out(m_path.fullpath(), std::ios::out);
    if (!out.is_open())
        return;
    for (Section const &finished : m_finished_sections) {
        m_section = finished;
        m_section.write(out.stream());
    }
}
