// The slider: from no travel to the greatest, by hand, by keys and by playing.

import { textOf } from './numbers.js';

const STEPS = 1000;
const SECONDS = 3;

/** Calls `show(travel)` for every travel that is set. It does nothing before `use` has set the way. */
export class Player {
  constructor(show) {
    this.show = show;
    this.slider = document.getElementById('travel');
    this.text = document.getElementById('travel-text');
    this.button = document.getElementById('play');
    this.slider.addEventListener('input', () => {
      this.stop();
      this.set(Number(this.slider.value));
    });
    this.slider.addEventListener('keydown', (event) => this.useKey(event));
    this.button.addEventListener('click', () => this.toggle());
  }

  /** Sets the greatest travel, and shows a part of it from 0 to 1. */
  use(greatest, part) {
    this.stop();
    this.greatest = greatest;
    this.slider.disabled = this.button.disabled = !(greatest > 0);
    this.set(greatest > 0 ? part * STEPS : 0);
  }

  /** Shows a step from 0 to STEPS. The last step is the greatest travel itself. */
  set(step) {
    this.step = Math.min(STEPS, Math.max(0, step));
    const travel = this.step === STEPS ? this.greatest : this.greatest * (this.step / STEPS);
    const rounded = textOf(Number(travel.toPrecision(6)));
    this.slider.value = this.step;
    this.slider.setAttribute('aria-valuetext', this.step === STEPS ? textOf(travel) : rounded);
    this.text.textContent = rounded;
    this.show(travel);
  }

  useKey(event) {
    const steps = { ArrowLeft: -1, ArrowDown: -1, ArrowRight: 1, ArrowUp: 1 };
    const targets = { Home: 0, End: STEPS, PageUp: this.step + STEPS / 10, PageDown: this.step - STEPS / 10 };
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    if (event.key in steps) this.set(Math.round(this.step) + steps[event.key] * (event.shiftKey ? 1 : STEPS / 100));
    else if (event.key in targets) this.set(targets[event.key]);
    else return;
    event.preventDefault();
    this.stop();
  }

  toggle() {
    if (this.slider.disabled) return;
    if (this.isPlaying) {
      this.stop();
      return;
    }
    this.isPlaying = true;
    this.button.textContent = 'Pause';
    const begin = this.step >= STEPS ? 0 : this.step;
    let started = null;
    const go = (now) => {
      if (!this.isPlaying) return;
      started ??= now;
      this.set(begin + ((now - started) / 1000 / SECONDS) * STEPS);
      if (this.step >= STEPS) this.stop();
      else requestAnimationFrame(go);
    };
    requestAnimationFrame(go);
  }

  stop() {
    this.isPlaying = false;
    this.button.textContent = 'Play';
  }
}
