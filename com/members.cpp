#include "com/members.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>

#include "com/failure.h"
#include "com/module.h"

namespace tavolin::com {
namespace {

void CheckLibrary(HRESULT result) {
    if (FAILED(result)) throw Error(result, "Tavolin", Message("The type library is damaged"));
}

class Attributes {
  public:
    explicit Attributes(ITypeInfo* info) : info_(info) {
        CheckLibrary(info->GetTypeAttr(&attributes_));
    }
    ~Attributes() { info_->ReleaseTypeAttr(attributes_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    const TYPEATTR* operator->() const { return attributes_; }

  private:
    ITypeInfo* info_;
    TYPEATTR* attributes_ = nullptr;
};

// The view of an interface that lists every parameter of its functions, results included.
Ref<ITypeInfo> TableView(REFIID iid) {
    const auto face = DescriptionOf(iid);
    HREFTYPE handle = 0;
    Ref<ITypeInfo> table;
    CheckLibrary(face->GetRefTypeOfImplType(static_cast<UINT>(-1), &handle));
    CheckLibrary(face->GetRefTypeInfo(handle, table.slot()));
    return table;
}

void ReadNamedType(ITypeInfo* info, HREFTYPE handle, Parameter& parameter) {
    Ref<ITypeInfo> named;
    CheckLibrary(info->GetRefTypeInfo(handle, named.slot()));
    const Attributes attributes(named.get());
    parameter.guid = attributes->guid;
    switch (attributes->typekind) {
        case TKIND_ENUM:
            parameter.type = VT_I4;
            break;
        case TKIND_RECORD:
            parameter.kind = Parameter::Kind::kRecord;
            parameter.type = VT_RECORD;
            break;
        default:
            parameter.kind = Parameter::Kind::kObject;
            parameter.type = attributes->guid == IID_IUnknown ? VT_UNKNOWN : VT_DISPATCH;
    }
}

void ReadType(ITypeInfo* info, const TYPEDESC& type, Parameter& parameter) {
    switch (type.vt) {
        case VT_PTR:
            ReadType(info, *type.lptdesc, parameter);
            // An object is a pointer to its interface already.
            if (parameter.kind == Parameter::Kind::kObject && type.lptdesc->vt != VT_PTR) return;
            parameter.by_reference = true;
            return;
        case VT_USERDEFINED:
            return ReadNamedType(info, type.hreftype, parameter);
        case VT_SAFEARRAY:
            parameter.type = static_cast<VARTYPE>(VT_ARRAY | type.lptdesc->vt);
            return;
        case VT_VARIANT:
            parameter.kind = Parameter::Kind::kAny;
            parameter.type = VT_VARIANT;
            return;
        default:
            parameter.type = type.vt;
    }
}

Parameter ReadParameter(ITypeInfo* info, const ELEMDESC& element) {
    Parameter parameter;
    ReadType(info, element.tdesc, parameter);
    const PARAMDESC& description = element.paramdesc;
    parameter.optional = (description.wParamFlags & PARAMFLAG_FOPT) != 0;
    parameter.result = (description.wParamFlags & PARAMFLAG_FRETVAL) != 0;
    if ((description.wParamFlags & PARAMFLAG_FHASDEFAULT) != 0) {
        ::VariantCopy(&parameter.fallback, &description.pparamdescex->varDefaultValue);
    }
    return parameter;
}

}  // namespace

Ref<ITypeInfo> DescriptionOf(REFGUID guid) {
    Ref<ITypeInfo> info;
    CheckLibrary(OwnTypeLibrary()->GetTypeInfoOfGuid(guid, info.slot()));
    return info;
}

Members::Members(REFIID iid) {
    const auto table = TableView(iid);
    const Attributes attributes(table.get());
    for (UINT i = 0; i < attributes->cFuncs; ++i) {
        FUNCDESC* function = nullptr;
        CheckLibrary(table->GetFuncDesc(i, &function));
        const std::unique_ptr<FUNCDESC, std::function<void(FUNCDESC*)>> guard(
            function, [&](FUNCDESC* it) { table->ReleaseFuncDesc(it); });
        Member member{
            function->memid, function->invkind, static_cast<ULONG_PTR>(function->oVft), {}};
        for (SHORT p = 0; p < function->cParams; ++p) {
            member.parameters.push_back(ReadParameter(table.get(), function->lprgelemdescParam[p]));
        }
        members_.push_back(std::move(member));
    }
}

const Member* Members::Find(DISPID id, WORD flags) const {
    constexpr WORD kPut = DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;
    constexpr WORD kGet = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    WORD wanted = (flags & kPut) != 0 ? kPut : kGet;
    // Whoever asks for a property's value alone must not set a method off.
    if ((flags & (kPut | kGet)) == DISPATCH_PROPERTYGET) wanted = DISPATCH_PROPERTYGET;
    for (const Member& member : members_) {
        if (member.id == id && (member.kind & wanted) != 0) return &member;
    }
    return nullptr;
}

const Members& MembersOf(const ClassRow& row) {
    static auto* const lock = new std::mutex;
    static auto* const read = new std::map<const ClassRow*, std::unique_ptr<Members>>;
    std::lock_guard guard(*lock);
    auto& members = (*read)[&row];
    if (!members) members = std::make_unique<Members>(row.iid);
    return *members;
}

}  // namespace tavolin::com
