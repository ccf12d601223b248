// The type library in talxrend.dll, written out as text and compared with the contract, type_library.txt:
// types by name, each function with its slot in the vtable and its hexadecimal dispid.
#include "tests/support/module.h"

#include <oleauto.h>

#include <fstream>
#include <map>
#include <sstream>

namespace talx::test {
namespace {

std::string taken(BSTR text) {
    const std::string result(text, text + SysStringLen(text));
    SysFreeString(text);
    return result;
}

// The name and, in quotes, the help string of a library or a type (MEMBERID_NIL), or of a member of a type.
template <class Documented>
std::pair<std::string, std::string> documentation(Documented* object, MEMBERID member = MEMBERID_NIL) {
    BSTR name = nullptr, help = nullptr;
    EXPECT_EQ(S_OK, object->GetDocumentation(member, &name, &help, nullptr, nullptr));
    return {taken(name), help ? " \"" + taken(help) + "\"" : ""};
}

// The name of a type that another one refers to, with its library's name if that is another library.
std::string reference(ITypeInfo* from, HREFTYPE href) {
    ComPtr<ITypeInfo> type;
    ComPtr<ITypeLib> library;
    UINT index = 0;
    EXPECT_EQ(S_OK, from->GetRefTypeInfo(href, &type));
    EXPECT_EQ(S_OK, type->GetContainingTypeLib(&library, &index));
    const std::string prefix = documentation(library.Get()).first;
    return (prefix == "RENDERENGLib" ? "" : prefix + ".") + documentation(type.Get()).first;
}

std::string typeName(ITypeInfo* type, const TYPEDESC& description) {
    std::map<VARTYPE, const char*> names{{VT_I4, "long"},           {VT_INT, "int"},       {VT_I8, "__int64"},
                                         {VT_UI1, "unsigned char"}, {VT_UI4, "OLE_COLOR"}, {VT_R8, "double"},
                                         {VT_BOOL, "VARIANT_BOOL"}, {VT_BSTR, "BSTR"}};
    return description.vt == VT_PTR           ? typeName(type, *description.lptdesc) + "*"
           : description.vt == VT_SAFEARRAY   ? "SAFEARRAY(" + typeName(type, *description.lptdesc) + ")"
           : description.vt == VT_USERDEFINED ? reference(type, description.hreftype)
                                              : names.emplace(description.vt, "?").first->second;
}

// A line for a function. A type library keeps the names and the help string of a property's accessors
// together, so that only the first of them shows any.
void writeFunction(std::ostream& text, ITypeInfo* type, const FUNCDESC& function, bool first) {
    BSTR names[16] = {};
    UINT count = 0;
    EXPECT_EQ(S_OK, type->GetNames(function.memid, names, 16, &count));
    EXPECT_EQ(VT_HRESULT, function.elemdescFunc.tdesc.vt);
    text << "  " << function.oVft / sizeof(void*) << ' ' << std::hex << function.memid << std::dec << ' '
         << (function.invkind & INVOKE_PROPERTYGET ? "get " : "")
         << (function.invkind & INVOKE_PROPERTYPUT ? "put " : "") << taken(names[0]) << '(';
    for (int i = 0; i < function.cParams; ++i) {
        const ELEMDESC& parameter = function.lprgelemdescParam[i];
        const USHORT flags = parameter.paramdesc.wParamFlags;
        const std::string name = taken(names[i + 1]);
        text << (i ? ", " : "") << (flags & PARAMFLAG_FIN ? "in " : "")
             << (flags & PARAMFLAG_FOUT ? "out " : "") << (flags & PARAMFLAG_FRETVAL ? "retval " : "")
             << (flags & PARAMFLAG_FOPT ? "optional " : "") << typeName(type, parameter.tdesc)
             << (first && !name.empty() ? " " + name : "");
    }
    text << ')' << (first ? documentation(type, function.memid).second : "") << '\n';
}

// A line for the type itself with its flags (hexadecimal) and bases, then one for each value or function.
void writeType(std::ostream& text, ITypeInfo* type) {
    static const char* const kinds[] = {"enum", "record", "module", "interface", "dispinterface", "coclass"};
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(S_OK, type->GetTypeAttr(&attributes));
    text << kinds[attributes->typekind] << ' ' << documentation(type).first << documentation(type).second;
    if (attributes->wTypeFlags) {
        text << " flags " << std::hex << attributes->wTypeFlags << std::dec;
    }
    for (UINT i = 0; i < attributes->cImplTypes; ++i) {
        HREFTYPE href = 0;
        INT flags = 0;
        EXPECT_TRUE(type->GetRefTypeOfImplType(i, &href) == S_OK &&
                    type->GetImplTypeFlags(i, &flags) == S_OK);
        text << (i ? " " : " : ") << reference(type, href)
             << (flags & IMPLTYPEFLAG_FDEFAULT ? "(default)" : "");
    }
    text << '\n';
    for (UINT i = 0; i < attributes->cVars; ++i) {
        VARDESC* value = nullptr;
        EXPECT_EQ(S_OK, type->GetVarDesc(i, &value));
        text << "  " << documentation(type, value->memid).first << " = " << V_I4(value->lpvarValue) << '\n';
        type->ReleaseVarDesc(value);
    }
    // A dispatch interface lists the functions of IDispatch first.
    MEMBERID previous = MEMBERID_NIL;
    for (UINT i = attributes->typekind == TKIND_DISPATCH ? 7 : 0; i < attributes->cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        EXPECT_EQ(S_OK, type->GetFuncDesc(i, &function));
        writeFunction(text, type, *function, std::exchange(previous, function->memid) != function->memid);
        type->ReleaseFuncDesc(function);
    }
    type->ReleaseTypeAttr(attributes);
}

TEST(TypeLibrary, StatesTheContract) {
    ComPtr<ITypeLib> library;
    ASSERT_EQ(S_OK, LoadTypeLibEx(pathOf(engineModule()).c_str(), REGKIND_NONE, &library));
    EXPECT_EQ(" \"Hemlar Render Engine Type Library\"", documentation(library.Get()).second);

    std::map<std::string, std::string> types; // by name
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        ComPtr<ITypeInfo> type;
        ASSERT_EQ(S_OK, library->GetTypeInfo(i, &type));
        std::ostringstream text;
        writeType(text, type.Get());
        types[documentation(type.Get()).first] = text.str();
    }
    std::string stated;
    for (const auto& type : types) {
        stated += type.second;
    }
    std::stringstream contract;
    contract << std::ifstream(CONTRACT_PATH).rdbuf();
    EXPECT_EQ(contract.str(), stated);
}

} // namespace
} // namespace talx::test
