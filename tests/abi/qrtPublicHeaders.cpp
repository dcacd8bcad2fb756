// Every public header, and the instantiations that the kit's libraries hand out: what qrtAbi.sh looks at.
#include "foundation/cache/qrtCacheBase.h"
#include "foundation/composition/qrtComposition.h"
#include "foundation/composition/qrtGraphEngineInterface.h"
#include "foundation/core/qrtNotificationHint.h"
#include "foundation/core/qrtObserver.h"
#include "foundation/core/qrtPlatform.h"
#include "foundation/core/qrtSubject.h"
#include "foundation/logger/qrtMsgBuilder.h"
#include "player/qrtPlayParams.h"
#include "player/qrtPlayer.h"

namespace QRT_0_81 {

template class EvictionAdvisorInterfaceBase<SharedPtr<CacheData>>;
template class ForEachFunctorInterface<SharedPtr<CacheData>>;

}  // namespace QRT_0_81
