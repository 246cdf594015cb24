# Build-time step of libqvgentl: zips the descriptions named in ZIP_FILES and writes OUTPUT, a
# C++ source holding every file of FILES (and the zips) as bytes with its SHA-1 and versions.
# Run with cmake -P in the folder of the configured descriptions.
#   -DOUTPUT=<.cpp>  -DFILES=a.xml,b.xml  -DZIP_FILES=c.xml   (comma-separated)
cmake_minimum_required(VERSION 3.22)

string(REPLACE "," ";" FILES "${FILES}")
string(REPLACE "," ";" ZIP_FILES "${ZIP_FILES}")
set(all_files ${FILES})
foreach(xml IN LISTS ZIP_FILES)
    get_filename_component(stem ${xml} NAME_WE)
    file(REMOVE ${stem}.zip)
    # The archive holds the XML under its bare name, as GenICam zips do.
    file(ARCHIVE_CREATE OUTPUT ${stem}.zip PATHS ${xml} FORMAT zip)
    list(APPEND all_files ${xml} ${stem}.zip)
endforeach()

function(read_version text attribute out)
    string(REGEX MATCH "${attribute}=\"([0-9]+)\"" match "${text}")
    if(NOT match)
        message(FATAL_ERROR "EmbedDescriptions: ${attribute} missing")
    endif()
    set(${out} ${CMAKE_MATCH_1} PARENT_SCOPE)
endfunction()

set(arrays "")
set(table "")
set(index 0)
foreach(file IN LISTS all_files)
    get_filename_component(stem ${file} NAME_WE)
    # Versions come from the XML (a zip is described by the XML inside it).
    file(READ ${stem}.xml xml_text LIMIT 4096)
    read_version("${xml_text}" SchemaMajorVersion schema_major)
    read_version("${xml_text}" SchemaMinorVersion schema_minor)
    read_version("${xml_text}" SchemaSubMinorVersion schema_subminor)
    read_version("${xml_text}" " MajorVersion" file_major)
    read_version("${xml_text}" " MinorVersion" file_minor)
    read_version("${xml_text}" " SubMinorVersion" file_subminor)

    file(READ ${file} hex HEX)
    file(SIZE ${file} size)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
    string(REGEX REPLACE "(0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,0x..,)" "\\1\n" bytes "${bytes}")
    file(SHA1 ${file} sha1)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," sha1_bytes "${sha1}")

    string(APPEND arrays "// ${file}\nconst unsigned char kData${index}[] = {\n${bytes}};\n\n")
    string(APPEND table "    {\"${file}\", kData${index}, ${size}, {${sha1_bytes}}, "
        "${schema_major}, ${schema_minor}, ${schema_subminor}, ${file_major}, ${file_minor}, ${file_subminor}},\n")
    math(EXPR index "${index} + 1")
endforeach()

file(WRITE ${OUTPUT}.tmp
"// Generated at build time by producers/libqvgentl/cmake/EmbedDescriptions.cmake: do not edit.
#include \"modules/EmbeddedFile.h\"

namespace QvGenTL {
namespace {

${arrays}} // namespace

const EmbeddedFile_t kEmbeddedFiles[] = {
${table}};
const size_t kEmbeddedFileCount = ${index};

} // namespace QvGenTL
")
file(COPY_FILE ${OUTPUT}.tmp ${OUTPUT} ONLY_IF_DIFFERENT)
file(REMOVE ${OUTPUT}.tmp)
