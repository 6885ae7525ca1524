// Undo and redo commands, collected by section and written to a text file. Nothing is executed: commands are texts that
// the caller makes, and the manager numbers them and lays them out. docs/file-formats.md has the file.
//
//     GEN_UNDO_REDO_MGR commands;
//     commands.start_new_file(project_directory);
//     commands.begin_section("Rename");
//     commands.add_description("net a becomes b");
//     commands.add_undo_command("rename_net b a", "");
//     commands.add_redo_command("rename_net a b", "the new name");
//     commands.end_section();
//     commands.commit_file();
//
// An object belongs to one thread at a time. A command or comment ends at its first character 0.
#ifndef GEN_UNDO_REDO_SYS_H
#define GEN_UNDO_REDO_SYS_H

#include "fio_sys.h"
#include "zel_export_sys.h"

#include <iosfwd>
#include <list>
#include <string>

/// The commands of one file. Other orders of the calls do what the single calls say.
class GEN_UNDO_REDO_MGR
{
public:
    /// No file, no finished section, and a current section without a name.
    GEN_API GEN_UNDO_REDO_MGR();
    GEN_API GEN_UNDO_REDO_MGR(GEN_UNDO_REDO_MGR const &other);
    GEN_API GEN_UNDO_REDO_MGR &operator=(GEN_UNDO_REDO_MGR const &other);

    /// Writes nothing: what isn't committed is lost.
    GEN_API ~GEN_UNDO_REDO_MGR();

    /// Makes "undo_redo.txt" in a directory the file, and drops all finished sections; the current one stays. The disk
    /// isn't touched.
    ///
    /// @param directory  with or without a separator at its end; empty: the current one
    GEN_API void start_new_file(std::string const &directory);

    /// Starts a section, empty but for its name. A current one that wasn't ended is lost.
    GEN_API void begin_section(std::string const &name);

    /// Replaces the description of the current section.
    GEN_API void add_description(std::string const &text);

    /// Appends a line to the undo commands of the current section. The file has them in the order of the calls.
    ///
    /// @param command  the text; empty: nothing is added, and no number is used up
    /// @param comment  stands on a line of its own below; empty: none
    GEN_API void add_undo_command(std::string const &command, std::string const &comment);

    /// Appends a line to the redo commands of the current section, as add_undo_command() does to its own. The two kinds
    /// are numbered apart and may be mixed in any order.
    GEN_API void add_redo_command(std::string const &command, std::string const &comment);

    /// Appends a copy of the current section to the finished ones if it has a name and any command. The section stays
    /// the current one, so a second call appends it a second time.
    GEN_API void end_section();

    /// Writes the file anew from all finished sections, the oldest first; an empty one if there are none. A file that
    /// can't be opened or written is silently left out.
    ///
    /// The sections stay, so that it may be called again. If the file could be opened and there is a finished section,
    /// the current section is then a copy of the last one.
    GEN_API void commit_file();

private:
    struct COMMANDS
    {
        std::list<std::string> lines; // formatted
        int count = 0;

        void add(std::string const &command, std::string const &comment);
        void write(std::ostream &out, char const *heading) const;
    };
    struct SECTION
    {
        std::string name;
        std::string description;
        COMMANDS undo;
        COMMANDS redo;

        void write(std::ostream &out) const;
    };

    FIO_PATH m_path;
    SECTION m_section;
    std::list<SECTION> m_finished_sections; // the oldest first
};

#endif
