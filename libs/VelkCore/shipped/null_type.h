#pragma once

#include "host/proxy_object.h"

#include "class_constants.h"

namespace velk::core {

/// Stands for a class without being an instance of it: its properties are the
/// constants of the class, which can only be read. Any thread may read them.
class NullType : public proxyObjectC {
  public:
    explicit NullType(ConstantClass const& constants);

    /// Answers every constant itself; what is left are the runtime's own members.
    unsigned invokeByName(mzComStringC const& name, unsigned callKind,
                          mzComVariantArrayC const& args, mzComVariantC& result,
                          mzComPtrT<mzIException>& exception) override;
    proxyMemberDescListS const* getProxyTypeInfo() override;

  private:
    ConstantClass const& class_;
};

}  // namespace velk::core
