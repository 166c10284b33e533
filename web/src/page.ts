import { LiveEngine } from "./engine/LiveEngine.js";
import { loadEngine } from "./engine/loadEngine.js";
import { keepOffline } from "./offline/keepOffline.js";
import { App } from "./page/App.js";
import { Messages } from "./page/Messages.js";
import { sentenceOf } from "./page/element.js";

async function begin(page: HTMLElement, loading: HTMLElement): Promise<void> {
    const messages = new Messages();
    try {
        if (!LiveEngine.isPossible())
            throw new Error(
                "This browser cannot play sound in a page as Tesserae does. Any from 2021 on can, " +
                    "and this one may where the page comes over https.",
            );
        new App(await loadEngine("tesserae.wasm"), page, messages);
        loading.remove();
    } catch (problem) {
        loading.replaceWith(messages.element);
        messages.say(sentenceOf(problem));
    }
}

const page = document.getElementById("page");
const loading = document.getElementById("loading");
if (page && loading) void begin(page, loading);
void keepOffline("offline.js");
