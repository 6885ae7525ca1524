// Undo and redo commands, collected by section and written to a text file. Commands are texts of the caller; nothing is
// executed. docs/file-formats.md describes the file.
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
// An object belongs to one thread at a time. A command or comment ends at its first null character.
#ifndef GEN_UNDO_REDO_SYS_H
#define GEN_UNDO_REDO_SYS_H

#include "fio_sys.h"
#include "zel_export_sys.h"

#include <iosfwd>
#include <list>
#include <string>

/// The commands of one file. The functions may be called in any order, each with the effect described at it.
class GEN_UNDO_REDO_MGR
{
public:
    /// Starts without a file and without finished sections; the current section has no name.
    GEN_API GEN_UNDO_REDO_MGR();
    GEN_API GEN_UNDO_REDO_MGR(GEN_UNDO_REDO_MGR const &other);
    GEN_API GEN_UNDO_REDO_MGR &operator=(GEN_UNDO_REDO_MGR const &other);

    /// Writes nothing: sections that were not committed are lost.
    GEN_API ~GEN_UNDO_REDO_MGR();

    /// Sets the file to "undo_redo.txt" in a directory, and drops all finished sections; the current section stays. The
    /// disk is not accessed.
    ///
    /// @param directory  a directory, with or without a separator at its end; empty means the current directory
    GEN_API void start_new_file(std::string const &directory);

    /// Starts a section with a name and without content. A current section that was not ended is lost.
    GEN_API void begin_section(std::string const &name);

    /// Replaces the description of the current section.
    GEN_API void add_description(std::string const &text);

    /// Appends a command to the undo commands of the current section. The file lists them in the order of the calls,
    /// numbered.
    ///
    /// @param command  the text; if empty, nothing is added and no number is used
    /// @param comment  written on its own line below the command; empty means no comment
    GEN_API void add_undo_command(std::string const &command, std::string const &comment);

    /// Appends a command to the redo commands of the current section, by the rules of add_undo_command(). Undo and redo
    /// commands are numbered separately; calls of the two functions may be mixed in any order.
    GEN_API void add_redo_command(std::string const &command, std::string const &comment);

    /// Appends a copy of the current section to the finished sections if it has a name and at least one command. The
    /// section stays the current one, so that a second call appends it again.
    GEN_API void end_section();

    /// Writes the file with all finished sections, the oldest first, and replaces its former content; without finished
    /// sections the file is empty. If the file can't be opened, no error is reported. If it can't be written to its
    /// end, an information message names it, with the reason; it then contains the beginning.
    ///
    /// The sections stay, so that the function can be called again. If the file could be opened and there is a finished
    /// section, the current section becomes a copy of the last finished one.
    GEN_API void commit_file();

private:
    struct Commands
    {
        std::list<std::string> lines; // formatted
        int count = 0;

        void add(std::string const &command, std::string const &comment);
        void write(std::ostream &out, char const *heading) const;
    };
    struct Section
    {
        std::string name;
        std::string description;
        Commands undo;
        Commands redo;

        void write(std::ostream &out) const;
    };

    FIO_PATH m_path;
    Section m_section;
    std::list<Section> m_finished_sections; // the oldest first
};

#endif
