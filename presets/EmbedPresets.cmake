# cmake -DOUTPUT=file.cpp -DFILES=a.json;b.json -P EmbedPresets.cmake
# Writes a source that holds the files as raw string literals. Compilers limit the length of one
# literal, so a long file becomes several, which the compiler joins.
set(piece 8000)

set(rows "")
foreach(file IN LISTS FILES)
    get_filename_component(name ${file} NAME_WE)
    file(READ ${file} text)
    string(LENGTH "${text}" length)
    set(literals "")
    set(at 0)
    while(at LESS length)
        string(SUBSTRING "${text}" ${at} ${piece} part)
        string(APPEND literals "\n     R\"tesserae(${part})tesserae\"")
        math(EXPR at "${at} + ${piece}")
    endwhile()
    string(APPEND rows "    {\"${name}\",${literals}},\n")
endforeach()

file(WRITE ${OUTPUT}.new
    "#include \"presets/EmbeddedPresets.h\"\n\n"
    "namespace Quorvan::Host {\n\nnamespace {\n"
    "constexpr FactoryPreset kPresets[] = {\n${rows}};\n"
    "}  // namespace\n\n"
    "std::span<const FactoryPreset> EmbeddedPresets() { return kPresets; }\n\n"
    "}  // namespace Quorvan::Host\n")
file(RENAME ${OUTPUT}.new ${OUTPUT})
