// Files as a Windows host has them: long paths, Polish letters, programs that hold them.

#include "base/error.h"
#include "ports/windows/adapters.h"
#include "tests/com/late_host.h"

namespace tavrix::test {
namespace {

TEST(WindowsFiles, AHostCutsAFileAtALongPath) {
    wchar_t temporary[MAX_PATH];
    GetTempPathW(MAX_PATH, temporary);
    const base::Text top = windows::text_from_wide(temporary) + base::Text(120, u'ś');
    const base::Text folder = top + u"\\" + base::Text(120, u'ć');
    for (const base::Text& path : {top, folder})
        CreateDirectoryW(windows::wide(u"\\\\?\\" + path), nullptr);
    const base::Text path = folder + u"\\p.zip";
    const auto files = ports::make_windows_files();
    const auto writer = files->create(path, ports::Readers::owner);
    writer->write(base::bytes_of("PK"));
    EXPECT_FALSE(files->is_file(path)) << "not before it is whole";
    writer->keep();
    EXPECT_EQ(answer(create(u"Tavrix.KseF_comm"), u"PodzielPlik", {path, folder}),
              "text " + base::to_utf8(path + u".001"));
    {
        const auto piece = files->open(path + u".001");
        EXPECT_EQ(piece->size(), 2u);
        EXPECT_THROW(files->remove(path + u".001"), base::AutomationError) << "it is being read";
    }
    files->remove(path + u".001");
    files->wipe(path);
    for (const base::Text& made : {folder, top})
        EXPECT_TRUE(RemoveDirectoryW(windows::wide(u"\\\\?\\" + made))) << "nothing is left";
}

// As the ministry's, whose schemas name each other by web addresses. That what is imported includes
// in turn, Wine's component does not take.
TEST(WindowsFiles, ASchemaTakesWhatItNamesFromItsFolder) {
    wchar_t temporary[MAX_PATH];
    GetTempPathW(MAX_PATH, temporary);
    const base::Text folder = windows::text_from_wide(temporary);
    const auto files = ports::make_windows_files();
    const auto schema = [&](const char16_t* name, const std::string& attributes,
                            const std::string& inside) {
        const auto writer = files->create(folder + name, ports::Readers::everyone);
        writer->write(base::bytes_of("<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' " +
                                     attributes + ">" + inside + "</xs:schema>"));
        writer->keep();
    };
    const std::string web = "schemaLocation='http://nowhere.example/schemas/";
    schema(u"types.xsd", "targetNamespace='urn:t'",
           "<xs:simpleType name='letter'><xs:restriction base='xs:string'>"
           "<xs:maxLength value='3'/></xs:restriction></xs:simpleType>");
    schema(u"row.xsd", "targetNamespace='urn:f' xmlns:u='urn:t'",
           "<xs:import namespace='urn:t' " + web +
               "types.xsd'/><xs:complexType name='row'><xs:sequence>"
               "<xs:element name='a' type='u:letter'/></xs:sequence></xs:complexType>");
    schema(u"invoice.xsd", "targetNamespace='urn:f' xmlns:t='urn:f'",
           "<xs:include " + web + "row.xsd'/><xs:element name='f' type='t:row'/>");
    const auto documents = ports::make_windows_xml_documents();
    const auto errors = [&](base::TextView text) {
        return documents
            ->validate(u"<f xmlns='urn:f'><a xmlns=''>" + base::Text(text) + u"</a></f>",
                       folder + u"invoice.xsd", ports::SchemaNamespace::its_own)
            .errors.size();
    };
    EXPECT_EQ(errors(u"abc"), 0u);
    EXPECT_EQ(errors(u"abcd"), 1u);
}

}  // namespace
}  // namespace tavrix::test
