#pragma once

#include <cstddef>
#include <utility>

namespace QuillFormatAPA {

// An owning reference to a reference-counted object (anything with addRef and
// release). Objects are shared between the library and its host, so the count
// lives in the object itself and a raw pointer can cross the C boundary.
template <class T>
class Ref {
 public:
  Ref() noexcept = default;
  Ref(std::nullptr_t) noexcept {}
  explicit Ref(T* p) noexcept : p_(p) {
    if (p_) p_->addRef();
  }
  Ref(const Ref& o) noexcept : Ref(o.p_) {}
  Ref(Ref&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
  template <class U>
  Ref(const Ref<U>& o) noexcept : Ref(o.get()) {}
  template <class U>
  Ref(Ref<U>&& o) noexcept : p_(o.detach()) {}
  ~Ref() {
    if (p_) p_->release();
  }

  Ref& operator=(Ref o) noexcept {
    std::swap(p_, o.p_);
    return *this;
  }

  T* get() const noexcept { return p_; }
  T* operator->() const noexcept { return p_; }
  T& operator*() const noexcept { return *p_; }
  explicit operator bool() const noexcept { return p_ != nullptr; }

  // Gives up ownership without releasing (for handing a reference to C).
  T* detach() noexcept { return std::exchange(p_, nullptr); }
  // Takes over a reference that was already counted (from C).
  static Ref adopt(T* p) noexcept {
    Ref r;
    r.p_ = p;
    return r;
  }

  friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.p_ == b.p_; }

 private:
  T* p_ = nullptr;
};

template <class T, class... A>
Ref<T> make(A&&... args) {
  return Ref<T>(new T(std::forward<A>(args)...));
}

}  // namespace QuillFormatAPA
