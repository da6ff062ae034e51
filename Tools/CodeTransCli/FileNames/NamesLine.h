// The command line of `names`. In a header, and included once, so that the parser's own headers are compiled
// once.
#ifndef CODETRANSCLI_NAMESLINE_H
#define CODETRANSCLI_NAMESLINE_H

#include <CLI/CLI.hpp>

#include "NamesCommand.h"

inline void AddNames(CLI::App& command, NamesOptions& options)
{
    command
        .add_option("FOLDER", options.folders, "Folders with the names to show or, with --apply, to change")
        ->type_name("");
    command.add_flag("--apply", options.apply, "Rename the files; without it, the new names are only shown");
    command
        .add_option("--from,-f", options.from, "Original encoding of the names: gbk, big5, utf-8 or cp437")
        ->type_name("ENC");
    command.add_option("--undo-list", options.undoList, "File to write the undo list to; it must not exist")
        ->type_name("FILE");
    command.add_option("--undo", options.undo, "Restore the old names from this undo list")
        ->type_name("FILE");
    command.add_option("--zip", options.archive, "List the names in a zip archive")->type_name("ARCHIVE");
    command
        .add_option("--extract-to", options.extractTo,
                    "Extract the archive into this folder, under the names listed")
        ->type_name("DIR");
    command.footer(
        "Examples:\n"
        "  codetrans names folder                        show what would be renamed\n"
        "  codetrans names --apply folder\n"
        "  codetrans names --undo codetrans-names-undo-20240517-120000.tsv\n"
        "  codetrans names --zip old.zip --extract-to new\n\n"
        "Exit status: 0 all done, 1 a name was undecided or refused, 2 wrong usage, 3 reading or renaming "
        "failed.");
}

#endif  // CODETRANSCLI_NAMESLINE_H
