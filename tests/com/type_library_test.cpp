// The type library in talxrend.dll, written out as text and compared with the contract line by line.
#include "tests/com/expected_type_library.h"
#include "tests/support/module.h"

#include <oleauto.h>

#include <map>
#include <sstream>
#include <tuple>

namespace talx::test {
namespace {

struct Documentation {
    std::wstring name, quotedHelp;
};

// Of a library or a type (MEMBERID_NIL), or of a member of a type.
template <class Documented>
Documentation documentation(Documented* object, MEMBERID member = MEMBERID_NIL) {
    BSTR name = nullptr, help = nullptr;
    EXPECT_EQ(S_OK, object->GetDocumentation(member, &name, &help, nullptr, nullptr));
    Documentation result{name ? name : L"", help ? L" \"" + std::wstring(help) + L"\"" : L""};
    SysFreeString(name);
    SysFreeString(help);
    return result;
}

// The name of a type that another one refers to, with its library's name if that is another library.
std::wstring reference(ITypeInfo* from, HREFTYPE href) {
    ComPtr<ITypeInfo> type;
    ComPtr<ITypeLib> library;
    UINT index = 0;
    if (FAILED(from->GetRefTypeInfo(href, &type)) || FAILED(type->GetContainingTypeLib(&library, &index))) {
        return L"(unresolved)";
    }
    const std::wstring prefix = documentation(library.Get()).name;
    return (prefix == L"RENDERENGLib" ? L"" : prefix + L".") + documentation(type.Get()).name;
}

std::wstring typeName(ITypeInfo* type, const TYPEDESC& description) {
    static const std::map<VARTYPE, std::wstring> names{
        {VT_I4, L"long"},           {VT_INT, L"int"},       {VT_I8, L"__int64"},
        {VT_UI1, L"unsigned char"}, {VT_UI4, L"OLE_COLOR"}, {VT_R8, L"double"},
        {VT_BOOL, L"VARIANT_BOOL"}, {VT_BSTR, L"BSTR"},     {VT_HRESULT, L"HRESULT"},
    };
    switch (description.vt) {
    case VT_PTR:
        return typeName(type, *description.lptdesc) + L"*";
    case VT_SAFEARRAY:
        return L"SAFEARRAY(" + typeName(type, *description.lptdesc) + L")";
    case VT_USERDEFINED:
        return reference(type, description.hreftype);
    default:
        return names.contains(description.vt) ? names.at(description.vt) : L"?";
    }
}

// A line for a function. A type library keeps the names and the help string of a property's accessors
// together, so that only the first of them shows any.
std::wstring functionText(ITypeInfo* type, const FUNCDESC& function, bool first) {
    BSTR names[16] = {};
    UINT count = 0;
    EXPECT_EQ(S_OK, type->GetNames(function.memid, names, 16, &count));
    std::wostringstream text;
    text << "  " << function.oVft / sizeof(void*) << ' ' << std::hex << function.memid << ' '
         << (function.invkind & INVOKE_PROPERTYGET ? "get " : "")
         << (function.invkind & INVOKE_PROPERTYPUT ? "put " : "") << names[0] << '(';
    for (int i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        const USHORT flags = parameter.paramdesc.wParamFlags;
        text << (i ? ", " : "") << (flags & PARAMFLAG_FIN ? "in " : "")
             << (flags & PARAMFLAG_FOUT ? "out " : "") << (flags & PARAMFLAG_FRETVAL ? "retval " : "")
             << (flags & PARAMFLAG_FOPT ? "optional " : "") << typeName(type, parameter.tdesc)
             << (first && names[i + 1] ? L" " : L"") << (first && names[i + 1] ? names[i + 1] : L"");
    }
    for (BSTR name : names) {
        SysFreeString(name);
    }
    EXPECT_EQ(VT_HRESULT, function.elemdescFunc.tdesc.vt);
    text << ')' << (first ? documentation(type, function.memid).quotedHelp : L"") << '\n';
    return text.str();
}

// A line for the type itself with its flags (hexadecimal) and bases, then one for each value or function.
std::wstring typeText(ITypeInfo* type) {
    static const char* const kinds[] = {"enum",          "record",  "module", "interface",
                                        "dispinterface", "coclass", "alias",  "union"};
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(S_OK, type->GetTypeAttr(&attributes));
    const auto [name, help] = documentation(type);
    std::wostringstream text;
    text << kinds[attributes->typekind] << ' ' << name << help;
    if (attributes->wTypeFlags) {
        text << " flags " << std::hex << attributes->wTypeFlags;
    }
    for (UINT i = 0; i < attributes->cImplTypes; ++i) {
        HREFTYPE href = 0;
        INT flags = 0;
        EXPECT_EQ(S_OK, type->GetRefTypeOfImplType(i, &href));
        EXPECT_EQ(S_OK, type->GetImplTypeFlags(i, &flags));
        text << (i ? " " : " : ") << reference(type, href)
             << (flags & IMPLTYPEFLAG_FDEFAULT ? "(default)" : "");
    }
    text << '\n';
    for (UINT i = 0; i < attributes->cVars; ++i) {
        VARDESC* value = nullptr;
        EXPECT_EQ(S_OK, type->GetVarDesc(i, &value));
        text << "  " << documentation(type, value->memid).name << " = " << std::dec << V_I4(value->lpvarValue)
             << '\n';
        type->ReleaseVarDesc(value);
    }
    // A dispatch interface lists the functions of IDispatch first.
    MEMBERID previous = MEMBERID_NIL;
    for (UINT i = attributes->typekind == TKIND_DISPATCH ? 7 : 0; i < attributes->cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        EXPECT_EQ(S_OK, type->GetFuncDesc(i, &function));
        text << functionText(type, *function, function->memid != previous);
        previous = function->memid;
        type->ReleaseFuncDesc(function);
    }
    type->ReleaseTypeAttr(attributes);
    return text.str();
}

TEST(TypeLibrary, StatesTheContract) {
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(engineModule(), path, MAX_PATH);
    ComPtr<ITypeLib> library;
    ASSERT_EQ(S_OK, LoadTypeLibEx(path, REGKIND_NONE, &library));

    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(S_OK, library->GetLibAttr(&attributes));
    EXPECT_EQ(std::tuple(1, 0), std::tuple(attributes->wMajorVerNum, attributes->wMinorVerNum));
    library->ReleaseTLibAttr(attributes);
    const auto [name, help] = documentation(library.Get());
    EXPECT_EQ(L"RENDERENGLib \"Hemlar Render Engine Type Library\"", name + help);

    std::map<std::wstring, std::wstring> types; // by name
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        ComPtr<ITypeInfo> type;
        ASSERT_EQ(S_OK, library->GetTypeInfo(i, &type));
        types[documentation(type.Get()).name] = typeText(type.Get());
    }
    std::wstring actual;
    for (const auto& type : types) {
        actual += type.second;
    }
    std::wistringstream expectedLines(contract), actualLines(actual);
    for (std::wstring expected, found; expectedLines && actualLines;) {
        std::getline(expectedLines, expected);
        std::getline(actualLines, found);
        EXPECT_EQ(expected, found);
    }
    EXPECT_EQ(expectedLines.eof(), actualLines.eof()) << "one has more lines";
}

} // namespace
} // namespace talx::test
