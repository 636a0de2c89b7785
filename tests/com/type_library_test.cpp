// The type library, read back from the component and compared with the table of the boundary, which
// has a checksum of its members: one line a member, "Interface id kind Name(parameters)",
// parameters as "Name:type=default", "?" where one is optional without a default, "&" where it is
// passed by reference. Before its members stands a line "Interface {id} flags", and lines for the
// library and the classes have their ids as well.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include "tests/com/client.h"

namespace tavolin_client {
namespace {

std::string Narrow(BSTR text) {
    std::string narrow;
    for (UINT i = 0; i < ::SysStringLen(text); ++i) narrow += static_cast<char>(text[i]);
    return narrow;
}

std::string Guid(REFGUID guid) {
    wchar_t text[40];
    ::StringFromGUID2(guid, text, 40);
    return " " + Narrow(Text(text));
}

class Description {
  public:
    explicit Description(Ref<ITypeInfo> info) : info_(std::move(info)) {
        info_->GetTypeAttr(&attributes_);
    }
    ~Description() { info_->ReleaseTypeAttr(attributes_); }

    std::string Name(MEMBERID member = MEMBERID_NIL) const {
        Text name;
        info_->GetDocumentation(member, name.out(), nullptr, nullptr, nullptr);
        return Narrow(name);
    }

    void Write(std::vector<std::string>& lines) const {
        switch (attributes_->typekind) {
            case TKIND_ENUM:
            case TKIND_RECORD:
                return WriteFields(lines);
            case TKIND_DISPATCH:
                lines.push_back(Name() + Guid(attributes_->guid) + Flags());
                return WriteMembers(lines);
            case TKIND_COCLASS:
                return WriteClass(lines);
            default:
                lines.push_back("unknown kind of " + Name());
        }
    }

  private:
    Ref<ITypeInfo> Referred(HREFTYPE handle) const {
        Ref<ITypeInfo> info;
        info_->GetRefTypeInfo(handle, info.slot());
        return info;
    }

    std::string Type(const TYPEDESC& type) const {
        switch (type.vt) {
            case VT_PTR: {
                const std::string to = Type(*type.lptdesc);
                const bool object = type.lptdesc->vt == VT_USERDEFINED && to[0] == '_';
                return object ? to : to + "&";
            }
            case VT_SAFEARRAY:
                return Type(*type.lptdesc) + "()";
            case VT_USERDEFINED:
                return Description(Referred(type.hreftype)).Name();
            case VT_BSTR:
                return "text";
            case VT_BOOL:
                return "flag";
            case VT_I4:
                return "long";
            case VT_UI1:
                return "byte";
            case VT_DATE:
                return "date";
            case VT_VARIANT:
                return "any";
            case VT_UNKNOWN:
                return "unknown";
            case VT_VOID:
                return "";
            default:
                return "vt" + std::to_string(type.vt);
        }
    }

    static std::string Default(const PARAMDESC& parameter) {
        if ((parameter.wParamFlags & PARAMFLAG_FHASDEFAULT) == 0) {
            return (parameter.wParamFlags & PARAMFLAG_FOPT) != 0 ? "?" : "";
        }
        const VARIANT& value = parameter.pparamdescex->varDefaultValue;
        switch (value.vt) {
            case VT_BSTR:
                return "=\"" + Narrow(value.bstrVal) + "\"";
            case VT_BOOL:
                return value.boolVal ? "=True" : "=False";
            case VT_UI1:
                return "=" + std::to_string(value.bVal);
            default:
                return "=" + std::to_string(value.lVal);
        }
    }

    // The interface's flags, which are those of its table of functions.
    std::string Flags() const {
        if ((attributes_->wTypeFlags & TYPEFLAG_FDUAL) == 0) return "";
        HREFTYPE handle = 0;
        info_->GetRefTypeOfImplType(static_cast<UINT>(-1), &handle);
        const Description table(Referred(handle));
        const bool automation = (table.attributes_->wTypeFlags & TYPEFLAG_FOLEAUTOMATION) != 0;
        return automation ? " dual oleautomation" : " dual";
    }

    // The members must stand in the order of the table of functions, without a gap.
    void WriteMembers(std::vector<std::string>& lines) const {
        int previous = -1;
        for (UINT i = 0; i < attributes_->cFuncs; ++i) {
            FUNCDESC* function = nullptr;
            info_->GetFuncDesc(i, &function);
            const bool dual = (attributes_->wTypeFlags & TYPEFLAG_FDUAL) != 0;
            const int slot = function->oVft / static_cast<int>(sizeof(void*));
            if (function->memid < 0x60000000) {
                const bool next = !dual || previous < 0 || slot == previous + 1;
                lines.push_back(Line(*function) + (next ? "" : " out of order"));
                previous = slot;
            }
            info_->ReleaseFuncDesc(function);
        }
    }

    std::string Line(const FUNCDESC& function) const {
        BSTR names[40]{};
        UINT count = 0;
        info_->GetNames(function.memid, names, 40, &count);
        static const char* const kKinds[] = {"", "", "get ", "", "put ", "", "", "", "set "};
        std::string line = Name() + " " + std::to_string(function.memid) + " " +
                           kKinds[function.invkind] + Narrow(names[0]) + "(";
        const bool is_put = function.invkind >= INVOKE_PROPERTYPUT;
        for (SHORT p = 0; p < function.cParams; ++p) {
            const ELEMDESC& parameter = function.lprgelemdescParam[p];
            const bool is_value = is_put && p + 1 == function.cParams;
            line += (p > 0 ? "," : "") + (is_value ? "" : Narrow(names[p + 1])) + ":" +
                    Type(parameter.tdesc) + Default(parameter.paramdesc);
        }
        line += ")" + Type(function.elemdescFunc.tdesc);
        for (BSTR name : names) ::SysFreeString(name);
        if ((function.wFuncFlags & FUNCFLAG_FRESTRICTED) != 0) line += " restricted";
        return line;
    }

    void WriteFields(std::vector<std::string>& lines) const {
        std::string line = Name() + " =";
        for (UINT i = 0; i < attributes_->cVars; ++i) {
            VARDESC* variable = nullptr;
            info_->GetVarDesc(i, &variable);
            line += " " + Name(variable->memid) + ":" +
                    (variable->varkind == VAR_CONST ? std::to_string(variable->lpvarValue->lVal)
                                                    : Type(variable->elemdescVar.tdesc));
            info_->ReleaseVarDesc(variable);
        }
        lines.push_back(line);
    }

    void WriteClass(std::vector<std::string>& lines) const {
        std::string line = "class " + Name() + Guid(attributes_->guid);
        if ((attributes_->wTypeFlags & TYPEFLAG_FCANCREATE) != 0) line += " creatable";
        if ((attributes_->wTypeFlags & TYPEFLAG_FAPPOBJECT) != 0) line += " global";
        for (UINT i = 0; i < attributes_->cImplTypes; ++i) {
            HREFTYPE handle = 0;
            INT flags = 0;
            info_->GetRefTypeOfImplType(i, &handle);
            info_->GetImplTypeFlags(i, &flags);
            if ((flags & IMPLTYPEFLAG_FDEFAULT) != 0) line += " default";
            line += ((flags & IMPLTYPEFLAG_FSOURCE) != 0 ? " source " : " ") +
                    Description(Referred(handle)).Name();
        }
        lines.push_back(line);
    }

    Ref<ITypeInfo> info_;
    TYPEATTR* attributes_ = nullptr;
};

// An interface's name, or all of the line of something else.
std::string OwnerOf(const std::string& line) {
    return line[0] == '_' ? line.substr(0, line.find(' ')) : line;
}

// What the table of the boundary has of each interface; all lines of its members go to `members`.
std::map<std::string, std::string> SummariesOf(const std::vector<std::string>& lines,
                                               std::map<std::string, std::string>& members) {
    std::map<std::string, std::string> summaries, names;
    for (const std::string& line : lines) {
        const std::string owner = OwnerOf(line);
        std::istringstream words(line);
        std::string id, name;
        words >> id >> id >> name;
        if (owner == line || id[0] == '{') {
            summaries[owner] = line;
            continue;
        }
        members[owner] += line + "\n";
        const bool assigns = name == "put" || name == "set";
        if (assigns || name == "get") words >> name;
        names[owner] += " " + name.substr(0, name.find('(')) + (assigns ? "=" : "");
    }
    for (auto& [owner, summary] : summaries) {
        if (owner[0] != '_') continue;
        std::uint64_t sum = 0xCBF29CE484222325;
        for (const char c : members[owner]) {
            sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001B3;
        }
        char digits[20];
        std::snprintf(digits, sizeof digits, " %08lx%08lx", static_cast<unsigned long>(sum >> 32),
                      static_cast<unsigned long>(sum & 0xFFFFFFFF));
        summary += digits;
        if (owner.rfind("_CVL", 0) == 0 && owner != "_CVLErrorNum") summary += names[owner];
    }
    return summaries;
}

TEST(TypeLibrary, IsTheBoundary) {
    Ref<ITypeLib> library;
    ASSERT_EQ(::LoadTypeLibEx((ComponentFolder() + L"\\Tavolin.dll").c_str(), REGKIND_NONE,
                              library.slot()),
              S_OK);
    std::vector<std::string> found;
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
    Text name;
    library->GetDocumentation(-1, name.out(), nullptr, nullptr, nullptr);
    found.push_back("library " + Narrow(name) + " " + std::to_string(attributes->wMajorVerNum) +
                    "." + std::to_string(attributes->wMinorVerNum) + Guid(attributes->guid));
    library->ReleaseTLibAttr(attributes);
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        Ref<ITypeInfo> info;
        library->GetTypeInfo(i, info.slot());
        Description(info).Write(found);
    }
    std::map<std::string, std::string> members;
    const auto is = SummariesOf(found, members);
    std::map<std::string, std::string> wanted;
    std::ifstream table(TAVOLIN_BOUNDARY);
    std::string owner;
    for (std::string line; std::getline(table, line);) {
        if (line.empty() || line[0] == '#') continue;
        if (line[0] != ' ') owner = OwnerOf(line);
        wanted[owner] += line[0] == ' ' ? line.substr(3) : line;
    }
    for (const auto& [key, summary] : wanted) {
        const auto place = is.find(key);
        EXPECT_EQ(place == is.end() ? "" : place->second, summary) << members[key];
    }
    EXPECT_EQ(is.size(), wanted.size());
}

}  // namespace
}  // namespace tavolin_client
