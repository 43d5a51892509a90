"use strict";

// Tells Orvanta, through the program that the browser starts for it, which site is in front: scheme
// and host of the active tab, and whether one of this profile's windows has the focus. It is silent
// until Orvanta says that the person has agreed. Then it speaks when that changes, when a window gets the
// focus and when it is asked. Private windows are closed to it by the manifest.

const api = globalThis.browser ?? chrome;

const VERSION = 1;
const HOST = "com.brindlework.orvanta";
const FIRST_WAIT = 1000; // ms
const LONGEST_WAIT = 16000;
const LOSS_SHOWS_AFTER = 300;

// A host as URL writes it, no longer than a name can be: what Orvanta accepts.
const NAME = /^(?:[!"$&'()*+,\-.0-9;=_`a-z{}~]{1,253}|\[[0-9a-f.]*:[0-9a-f:.]*\])$/;

let port = null;
let openedAt = 0;
let wait = FIRST_WAIT;
let mayTell = false;
let told = "";
let turn = Promise.resolve();

function originOf(address) {
  const url = URL.canParse(address) ? new URL(address) : null;
  const isSite = url?.protocol === "http:" || url?.protocol === "https:";
  return isSite && NAME.test(url.hostname) ? `${url.protocol}//${url.hostname}` : null;
}

async function state() {
  try {
    const window = await api.windows.getLastFocused();
    const [tab] = await api.tabs.query({ active: true, windowId: window.id });
    return { v: VERSION, origin: originOf(tab?.url), focused: window.focused && !window.incognito };
  } catch {
    // No window, or none that may be seen.
    return { v: VERSION, origin: null, focused: false };
  }
}

// One at a time and in order, so that what was looked up first is not said last.
function say(answer) {
  turn = turn.then(async () => {
    if (!mayTell) {
      return;
    }
    const now = await state();
    const text = JSON.stringify(now);
    if (port && mayTell && (answer || text !== told)) {
      told = text;
      port.postMessage(answer ? { ...now, answer } : now);
    }
  }).catch(() => {}); // The port has just ended; its own listener follows.
}

function connect() {
  if (port) {
    return;
  }
  const opened = api.runtime.connectNative(HOST);
  port = opened;
  openedAt = Date.now();
  mayTell = false;
  opened.onMessage.addListener((message) => {
    if (message?.v !== VERSION) {
      opened.disconnect();
      lost();
    } else if (typeof message.tell === "boolean") {
      mayTell = message.tell;
      told = "";
      say();
    } else if (Number.isInteger(message.ask)) {
      say(message.ask);
    }
  });
  opened.onDisconnect.addListener(() => {
    void api.runtime.lastError; // Read, or the browser logs it as an error of ours.
    if (port === opened) {
      lost();
    }
  });
}

// The host ended, or is not there. Tried again soon, then ever later, and from then on once a minute:
// without a port the browser may end this script and its timers, but an alarm starts it again.
function lost() {
  port = null;
  if (Date.now() - openedAt > LONGEST_WAIT) {
    wait = FIRST_WAIT;
  }
  if (wait <= LONGEST_WAIT) {
    setTimeout(connect, wait);
    wait *= 2;
  }
  api.alarms.create("connect", { delayInMinutes: 1 });
}

api.tabs.onActivated.addListener(() => say());
api.tabs.onUpdated.addListener((_, change, tab) => {
  if (change.url !== undefined && tab.active) {
    say();
  }
});
api.windows.onFocusChanged.addListener((id) => {
  if (id === api.windows.WINDOW_ID_NONE) {
    // The window may look focused a moment longer; or it is, and a menu opened.
    setTimeout(say, LOSS_SHOWS_AFTER);
  } else {
    // Chromium is silent when another application takes the focus, and at times when another profile
    // does. So a window that gets it is news even if it was the last one told.
    told = "";
  }
  say();
});
api.alarms.onAlarm.addListener(connect);
// Whatever starts the browser or this script starts the connection.
api.runtime.onStartup.addListener(connect);
api.runtime.onInstalled.addListener(connect);
connect();
