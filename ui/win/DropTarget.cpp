#include "ui/win/DropTarget.h"

#include <ole2.h>

#include <atomic>
#include <cassert>
#include <system_error>
#include <utility>

#include "ui/win/Window.h"

namespace kestrelon::win {

class DropTarget::Target final : public IDropTarget {
 public:
  explicit Target(DropTarget& owner) : owner_(&owner) {}
  virtual ~Target() = default;
  Target(const Target&) = delete;
  Target& operator=(const Target&) = delete;

  // From here on whatever the system still asks is answered with nothing.
  void Detach() {
    owner_ = nullptr;
    data_.reset();
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override {
    if (object == nullptr) return E_POINTER;
    const bool known = id == IID_IUnknown || id == IID_IDropTarget;
    *object = known ? static_cast<IDropTarget*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() noexcept override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT STDMETHODCALLTYPE DragEnter(IDataObject* data, DWORD, POINTL screen,
                                      DWORD* effect) noexcept override {
    if (data == nullptr || effect == nullptr) return E_INVALIDARG;
    if (owner_ != nullptr) {
      data->AddRef();
      data_.reset(data);  // the moves that follow come without it
    }
    return Over(screen, effect);
  }
  HRESULT STDMETHODCALLTYPE DragOver(DWORD, POINTL screen, DWORD* effect) noexcept override {
    if (effect == nullptr) return E_INVALIDARG;
    return Over(screen, effect);
  }
  HRESULT STDMETHODCALLTYPE DragLeave() noexcept override {
    const ComPtr<Target> alive = Reference();
    data_.reset();
    return Answer(nullptr, [this] {
      TellLeft();
      return DWORD{DROPEFFECT_NONE};
    });
  }
  HRESULT STDMETHODCALLTYPE Drop(IDataObject* data, DWORD, POINTL screen, DWORD* effect) noexcept override {
    if (data == nullptr || effect == nullptr) return E_INVALIDARG;
    const ComPtr<Target> alive = Reference();
    data_.reset();
    return Answer(effect, [&]() -> DWORD {
      if (!Takes()) {
        TellLeft();
        return DROPEFFECT_NONE;
      }
      over_ = false;
      return owner_->events.drop ? owner_->events.drop(*data, ToClient(screen)) : DROPEFFECT_NONE;
    });
  }

 private:
  // An event may revoke the target, and the system's reference goes with that.
  ComPtr<Target> Reference() {
    AddRef();
    return ComPtr<Target>(this);
  }

  // `effect` holds what the source allows, and then the part of the body's result that it does.
  template <class Body>
  HRESULT Answer(DWORD* effect, Body&& body) noexcept {
    const DWORD allowed = effect != nullptr ? std::exchange(*effect, DWORD{DROPEFFECT_NONE}) : 0;
    return static_cast<HRESULT>(Guarded(E_UNEXPECTED, [&]() -> LRESULT {
      const DWORD result = body();
      if (effect != nullptr) *effect = result & allowed;
      return S_OK;
    }));
  }

  HRESULT Over(POINTL screen, DWORD* effect) noexcept {
    const ComPtr<Target> alive = Reference();
    return Answer(effect, [&]() -> DWORD {
      if (!data_ || !Takes()) {
        TellLeft();
        return DROPEFFECT_NONE;
      }
      over_ = true;
      if (!owner_->events.dragOver) return DROPEFFECT_NONE;
      data_.get()->AddRef();
      const ComPtr<IDataObject> data(data_.get());  // revoking in the event lets go of ours
      return owner_->events.dragOver(*data.get(), ToClient(screen));
    });
  }

  void TellLeft() {
    if (std::exchange(over_, false) && owner_ != nullptr && owner_->events.dragLeave)
      owner_->events.dragLeave();
  }
  bool Takes() const {
    return owner_ != nullptr && IsReachable(owner_->window_) &&
           (!owner_->events.takes || owner_->events.takes());
  }
  POINT ToClient(POINTL screen) const {
    POINT point{screen.x, screen.y};
    ::ScreenToClient(owner_->window_, &point);
    return point;
  }

  std::atomic<ULONG> references_{1};
  DropTarget* owner_;
  ComPtr<IDataObject> data_;
  bool over_ = false;  // the events were told of a drag and not yet of its end
};

DropTarget::~DropTarget() { Revoke(); }

void DropTarget::Register(HWND window) {
  Revoke();
  ComPtr<Target> target(new Target(*this));
  const HRESULT result = ::RegisterDragDrop(window, target.get());
  if (FAILED(result)) throw std::system_error(result, std::system_category(), "RegisterDragDrop");
  window_ = window;
  target_ = target.release();
}

void DropTarget::Revoke() {
  if (target_ == nullptr) return;
  const ComPtr<Target> target(std::exchange(target_, nullptr));
  target.get()->Detach();
  const HWND window = std::exchange(window_, nullptr);
  // With a window that is gone its registration went too.
  [[maybe_unused]] const HRESULT result = ::RevokeDragDrop(window);
  assert(SUCCEEDED(result) || !::IsWindow(window));
}

IDropTarget* DropTarget::Object() const { return target_; }

}  // namespace kestrelon::win
