#include "MenuExtra/StatusBannerView.h"

#include <algorithm>

#include "MenuExtra/Animator.h"
#include "platform/core/Date.h"
#include "platform/core/RunLoop.h"
#include "platform/ui/Canvas.h"
#include "platform/ui/StatusBar.h"

using platform::Rect;

namespace {

// Layout in points.
constexpr double kIconX = 2.0;
constexpr double kIconWidth = 20.0;
constexpr double kIconHeight = 15.0;
constexpr double kTextX = kIconX + kIconWidth + 8.0;
constexpr double kTextRightMargin = 3.0;
constexpr double kTextBottomMargin = 2.0;
// Between the scrolling text and the copy that follows it.
constexpr double kScrollGap = 20.0;
// Icon margins, icon-to-text gap, right margin and the scroll gap.
constexpr double kRevealPadding = 2.0 + 2.0 + 8.0 + 3.0 + 20.0;
constexpr int kFadeColumns = 3;

constexpr double kRevealFrameInterval = 1.0 / 60.0;
constexpr double kScrollInterval = 1.0 / 30.0;
constexpr float kScrollStep = 2.0f;

}  // namespace

const platform::SelectorTable<StatusBannerView>& StatusBannerView::selectorTable() {
  static const platform::SelectorTable<StatusBannerView> table{
      {"_doFrameOfRevealAnimation:", &StatusBannerView::_doFrameOfRevealAnimation},
      {"_scrollTimer:", &StatusBannerView::_scrollTimerTick},
  };
  return table;
}

std::shared_ptr<StatusBannerView> StatusBannerView::initWithFrameStatusItem(const Rect& frame,
                                                                            platform::MenuExtra* statusItem) {
  return std::make_shared<StatusBannerView>(frame, statusItem);
}

StatusBannerView::StatusBannerView(const Rect& frame, platform::MenuExtra* statusItem)
    : View(frame),
      _imageCell(std::make_shared<platform::ButtonCell>()),
      _textCell(platform::TextFieldCell::initTextCell("")),
      _statusItem(statusItem) {
  _imageCell->setBordered(false);
  _imageCell->setHighlightsBy(platform::kContentsCellMask | platform::kChangeGrayCellMask);
  _imageCell->setImagePosition(platform::CellImagePosition::ImageOnly);
  _imageCell->setImageDimsWhenDisabled(true);
  _imageCell->setEnabled(true);

  _textCell->setScrollable(false);
  _textCell->setFontSize(platform::Cell::systemFontSizeForControlSize(platform::ControlSize::Regular));
  _textCell->setLineBreakMode(platform::LineBreakMode::ByTruncatingTail);
}

StatusBannerView::~StatusBannerView() { stopAllAnimation(); }

// Configuration.

void StatusBannerView::setImage(platform::ImagePtr image) {
  _imageCell->setImage(std::move(image));
  setNeedsDisplay(true);
}

void StatusBannerView::setBannerString(platform::StringPtr text) {
  if (text == _string) return;
  _string = std::move(text);
  _textCell->setStringValue(_string ? _string->value() : "");

  const double oldWidth = _stringSize.width;
  _stringSize = _textCell->cellSizeForBounds(
      {0, 0, platform::kGreatestFiniteMagnitude, platform::kGreatestFiniteMagnitude});
  _maxCappedRevealWidth = _desiredMaxWidth();

  // A narrower text while revealed collapses rather than shrinks; a wider
  // one always re-runs the reveal from the collapsed width.
  if (oldWidth > _stringSize.width && revealed())
    startCollapseAnimation();
  else if (_stringSize.width > oldWidth)
    startRevealAnimation();
  else if (!revealed())
    startRevealAnimation();
  setNeedsDisplay(true);
}

float StatusBannerView::_desiredMaxWidth() const {
  return std::min(_maxRevealWidth, static_cast<float>(_stringSize.width + kRevealPadding));
}

// Reveal and collapse.

void StatusBannerView::startRevealAnimation() {
  _revealProgress = 0.0f;
  _revealing = true;
  _startRevealTimer();
}

void StatusBannerView::startCollapseAnimation() {
  _revealProgress = 1.0f;
  _revealing = false;
  _startRevealTimer();
}

void StatusBannerView::stopRevealAnimation() {
  _stopRevealTimer();
  setRevealed(true);
}

void StatusBannerView::stopCollapseAnimation() {
  _stopRevealTimer();
  setRevealed(false);
}

void StatusBannerView::setRevealed(bool revealed) {
  if (revealed == _revealed) return;
  _revealed = revealed;
  sizeToFit();
  setNeedsDisplay(true);
}

void StatusBannerView::sizeToFit() {
  _stopRevealTimer();
  if (_statusItem) _statusItem->setLength(revealed() ? _desiredMaxWidth() : minWidth());
}

void StatusBannerView::_startRevealTimer() {
  // A running chain picks up the new direction at its next frame.
  if (_revealAnimating) return;
  _revealAnimating = true;
  _doFrameOfRevealAnimation(platform::Date::now());
}

void StatusBannerView::_stopRevealTimer() {
  // A frame already scheduled still arrives and ends at the flag.
  _revealAnimating = false;
}

void StatusBannerView::_doFrameOfRevealAnimation(const platform::ObjectPtr& startDate) {
  if (!_revealAnimating) return;
  auto start = std::dynamic_pointer_cast<platform::Date>(startDate);
  if (!start) return;
  const float t = static_cast<float>(-start->timeIntervalSinceNow());
  if (!(t <= 1.0f)) {
    // The slot keeps the width of the last frame.
    _stopRevealTimer();
    if (_revealing)
      _revealComplete();
    else
      _concealComplete();
    return;
  }
  const float eased = Animator::applySimpleContourToValue(EaseInAndOutQuadraticContour, t);
  const float collapsedWidth = minWidth();
  const float cap = _maxCappedRevealWidth;
  const float distance = (cap - collapsedWidth) * eased;
  if (_statusItem) _statusItem->setLength(_revealing ? collapsedWidth + distance : cap - distance);
  platform::RunLoop::main().performSelectorAfterDelay(shared_from_this(), "_doFrameOfRevealAnimation:", start,
                                                      kRevealFrameInterval, platform::kDefaultRunLoopMode);
}

void StatusBannerView::_revealComplete() {
  _revealed = true;
  if (_delegate) _delegate->statusBannerViewFinishedRevealAnimation(*this, true);
}

void StatusBannerView::_concealComplete() {
  _revealed = false;
  if (_delegate) _delegate->statusBannerViewFinishedRevealAnimation(*this, false);
}

// Scrolling.

void StatusBannerView::startBannerAnimation() {
  _targetValue = static_cast<float>(_stringSize.width + kScrollGap);
  _currentSlideProgress = 0.0f;
  _scrollCycles = 0;
  _startScrollTimer();
}

void StatusBannerView::stopBannerAnimation() { _stopScrollTimer(); }

void StatusBannerView::_startScrollTimer() {
  if (_scrollTimer) return;
  _scrollTimer = platform::Timer::scheduledTimerWithTimeInterval(kScrollInterval, shared_from_this(), "_scrollTimer:",
                                                                 nullptr, true);
}

void StatusBannerView::_stopScrollTimer() {
  if (!_scrollTimer) return;
  _scrollTimer->invalidate();
  _scrollTimer.reset();
  _currentSlideProgress = 0.0f;
  setNeedsDisplay(true);
}

void StatusBannerView::_scrollTimerTick(const platform::ObjectPtr&) {
  _currentSlideProgress += kScrollStep;
  if (_currentSlideProgress >= _targetValue) {
    _currentSlideProgress = 0.0f;
    ++_scrollCycles;
    if (_delegate) _delegate->statusBannerViewBannerFinishedScrollCycle(*this, _scrollCycles);
  }
  setNeedsDisplay(true);
}

void StatusBannerView::stopAllAnimation() {
  if (_scrollTimer) {
    _scrollTimer->invalidate();
    _scrollTimer.reset();
  }
  platform::RunLoop::main().cancelPreviousPerformRequests(this);
}

// Events and drawing.

void StatusBannerView::mouseDown(const platform::Event&) {
  if (_statusItem) _statusItem->popUpMenu(_statusItem->menu());
}

Rect StatusBannerView::textClipRect() const {
  const Rect bounds = this->bounds();
  return {kTextX, 0, bounds.width - kTextX - kTextRightMargin, bounds.height - kTextBottomMargin};
}

void StatusBannerView::drawRect(platform::Canvas& canvas, const Rect&) {
  const bool menuDown = _statusItem && _statusItem->isMenuDown();
  if (_statusItem) _statusItem->drawMenuBackground(canvas, menuDown);
  const auto style = platform::StatusBar::backgroundStyleForHighlight(menuDown);
  _imageCell->setBackgroundStyle(style);
  _textCell->setBackgroundStyle(style);

  const Rect bounds = this->bounds();
  _imageCell->drawWithFrameInView({kIconX, (bounds.height - kIconHeight) * 0.5, kIconWidth, kIconHeight}, this,
                                  canvas);
  if (!_string || isCollapsed()) return;

  const Rect clip = textClipRect();
  canvas.saveGraphicsState();
  canvas.clipToRect(clip);
  Rect text{kTextX - _currentSlideProgress, 0, _stringSize.width, bounds.height - kTextBottomMargin};
  _textCell->drawWithFrameInView(text, this, canvas);
  if (_currentSlideProgress > 0) {
    // The copy stands where the text started when the offset wraps.
    text.x = text.x + _stringSize.width + kScrollGap;
    _textCell->drawWithFrameInView(text, this, canvas);
  }
  canvas.restoreGraphicsState();

  if (_currentSlideProgress > 0 && !menuDown) {
    // Erase a fading fraction of the outermost columns at both ends. The last
    // pass has alpha 0 and erases nothing, so the fade is two columns deep.
    for (int i = 0; i < kFadeColumns; ++i) {
      const auto color = platform::Color::black(1.0 - (i + 1) / 3.0);
      const std::vector<Rect> columns{{clip.x + i, 0, 1, clip.height}, {clip.x + clip.width - 1 - i, 0, 1, clip.height}};
      canvas.fillRectsWithColors(columns, {color, color}, platform::CompositingOperation::DestinationOut);
    }
  }
}
