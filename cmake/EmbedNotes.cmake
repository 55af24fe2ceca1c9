# cmake -DFOLDER=... -DOUTPUT=... -P EmbedNotes.cmake: every FOLDER/<class>.md as one entry of embeddedNotes.

file (GLOB files "${FOLDER}/*.md")
list (SORT files)
set (text "#include \"OperatorNotes.h\"\n\nnamespace morvanelab\n{\n\nconst EmbeddedNote embeddedNotes[] {\n")
foreach (file IN LISTS files)
    get_filename_component (name "${file}" NAME_WE)
    file (READ "${file}" note)
    string (APPEND text "    { \"${name}\", R\"~(${note})~\" },\n")
endforeach()
list (LENGTH files count)
string (APPEND text "};\nconst std::size_t embeddedNoteCount = ${count};\n\n} // namespace morvanelab\n")
file (WRITE "${OUTPUT}" "${text}")
