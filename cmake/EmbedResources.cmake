# cmake -DROOT=... -DFILES=a;b -DOUTPUT=... -P EmbedResources.cmake: every file, named relative to ROOT, as one entry of
# embeddedResources. String literals compile many times faster than lists of numbers.

set (literals "")
set (entries "")
set (index 0)
foreach (file IN LISTS FILES)
    file (READ "${ROOT}/${file}" bytes HEX)
    string (LENGTH "${bytes}" size)
    math (EXPR size "${size} / 2")
    string (REPEAT "." 128 line)
    string (REGEX REPLACE "(${line})" "\\1\n" bytes "${bytes}")
    string (REGEX REPLACE "([0-9a-f][0-9a-f])" "\\\\x\\1" bytes "${bytes}")
    string (REGEX REPLACE "([^\n]+)" "    \"\\1\"" bytes "${bytes}")
    string (APPEND literals "const char file${index}[] =\n${bytes};\n")
    string (APPEND entries "    { \"${file}\", { file${index}, ${size} } },\n")
    math (EXPR index "${index} + 1")
endforeach()

file (WRITE "${OUTPUT}" "#include \"ui/MVResources.h\"\n\nnamespace morvanelab\n{\n\nnamespace\n{\n${literals}} // namespace\n\n"
                        "const EmbeddedResource embeddedResources[] {\n${entries}};\n"
                        "const std::size_t embeddedResourceCount = ${index};\n\n} // namespace morvanelab\n")
