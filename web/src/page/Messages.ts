import { button, make } from "./element.js";

const newsMs = 6000;

/** Sentences for the user: problems, which stay until they are put away, and news, which pass. */
export class Messages {
    readonly element: HTMLElement;
    private readonly problem = make("p", { role: "alert" });
    private readonly news = make("p", { role: "status", class: "news" });
    private readonly box: HTMLElement;
    private passing = 0;

    constructor() {
        this.box = make(
            "div",
            { class: "problem", hidden: true },
            this.problem,
            button("Put away", () => this.putAway(), "quiet"),
        );
        this.element = make("div", { class: "messages" }, this.box, this.news);
    }

    /** The focus goes on to what follows. */
    private putAway(): void {
        this.say("");
        this.element.tabIndex = -1;
        this.element.focus();
    }

    /** A problem; an empty sentence puts the last one away. */
    say(sentence: string): void {
        this.problem.textContent = sentence;
        this.box.hidden = sentence === "";
    }
    tell(sentence: string): void {
        this.say("");
        this.news.textContent = sentence;
        window.clearTimeout(this.passing);
        this.passing = window.setTimeout(() => (this.news.textContent = ""), newsMs);
    }
}
