for (const button of document.querySelectorAll("button[data-copies]")) {
  button.hidden = false;
  button.addEventListener("click", async () => {
    const source = document.getElementById(button.dataset.copies);
    const status = document.getElementById("status");
    const label = button.textContent;
    let copied = true;
    try {
      await navigator.clipboard.writeText(source.textContent);
    } catch {
      getSelection().selectAllChildren(source);
      copied = document.execCommand("copy");
    }
    button.textContent = copied ? "Copied" : "Press Ctrl+C";
    status.textContent = copied ? "The text was copied." : "The text is selected: press Ctrl+C.";
    setTimeout(() => { button.textContent = label; status.textContent = ""; }, 2500);
  });
}
