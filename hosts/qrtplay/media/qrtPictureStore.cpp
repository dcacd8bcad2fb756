#include "media/qrtPictureStore.h"

#include <utility>

#include "media/qrtPictureStoreWork.h"

namespace qrtplay {

PictureStore::PictureStore(size_t mediaCount, Open open, size_t budgetInBytes)
    : m_work(std::make_unique<Work>(mediaCount, std::move(open), budgetInBytes)) {}

PictureStore::~PictureStore() = default;

Outcome PictureStore::picture(Wish const& wish, Answer& answer) {
    return m_work->picture(wish, answer);
}

void PictureStore::prepare(std::vector<Wish> wishes) {
    m_work->prepare(std::move(wishes));
}

void PictureStore::setBudget(size_t bytes) {
    m_work->setBudget(bytes);
}

size_t PictureStore::sizeInBytes() const {
    return m_work->sizeInBytes();
}

void PictureStore::clear() {
    m_work->clear();
}

bool PictureStore::keptPicture(Wish const& wish, Answer& answer) {
    return m_work->keptPicture(wish, answer);
}

bool PictureStore::isKept(Wish const& wish) const {
    return m_work->isKept(wish);
}

}  // namespace qrtplay
